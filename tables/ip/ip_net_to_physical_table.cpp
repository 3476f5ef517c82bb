// SPDX-License-Identifier: BSD-3-Clause
// ipNetToPhysicalTable: the rows of IPv4.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipNetToPhysicalEntry[] = {1, 3, 6, 1, 2, 1, 4, 35, 1};

class NetToPhysicalRows
{
  public:
    using Row = IpmibIpNeighbour;
    using Index = std::array<host::SubId, 7>;
    static constexpr host::SubIdRange shape[] = {host::anyIfIndex, ofIpv4,         ofIpv4Length,  host::anyOctet,
                                                 host::anyOctet,   host::anyOctet, host::anyOctet};

    explicit NetToPhysicalRows(const IpmibIpHooks &ip) : ip_(ip) {}

    void start() const { follow(ip_, IPMIB_FOLLOW_NEIGHBOURS); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        return ip_.find_neighbour(index[0], addressAt(index, 3), &row) == 0;
    }
    bool next(const Index *behind, Row &row) const
    {
        const Index index = behind == nullptr ? Index{} : *behind;
        return ip_.next_neighbour(index[0], addressAt(index, 3), &row) == 0;
    }
    Index indexOf(const Row &row) const
    {
        const Ipv4Octets address = octetsOf(row.address);
        return {row.if_index, ipv4Type, ipv4Length, address[0], address[1], address[2], address[3]};
    }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {4, [](const Row &row) { return octets(row.link_layer, row.link_layer_size); }}, // ipNetToPhysicalPhysAddress
        {5, [](const Row &row) { return ticks(row.last_updated); }},                     // ipNetToPhysicalLastUpdated
        {6, [](const Row &row) { return integer(row.type); }},                           // ipNetToPhysicalType
        {7, [](const Row &row) { return integer(row.state); }},                          // ipNetToPhysicalState
        {8, [](const Row &) { return integer(rowActive); }},                             // ipNetToPhysicalRowStatus
    };

    const IpmibIpHooks &ip_;
};

} // namespace

SourcePointer ipNetToPhysicalTable(const IpmibIpHooks &ip)
{
    if (ip.find_neighbour == nullptr || ip.next_neighbour == nullptr) {
        return nullptr;
    }
    return std::make_unique<host::RowSource<NetToPhysicalRows>>(ipNetToPhysicalEntry, NetToPhysicalRows(ip));
}

} // namespace ipmib::tables
