// SPDX-License-Identifier: BSD-3-Clause
// ipNetToMediaTable: a row for each IPv4 neighbour of an interface.

#include "tables/ip/ipv4.h"
#include "tables/tables.h"
#include "tables/values.h"

#include "host/row_source.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipNetToMediaEntry[] = {1, 3, 6, 1, 2, 1, 4, 22, 1};

class NetToMediaRows
{
  public:
    struct Row {
        IpmibIpv4Neighbour platform;
        Ipv4Octets address;
    };
    using Index = std::array<host::SubId, 5>;
    static constexpr host::SubIdRange shape[] = {host::anyIfIndex, host::anyOctet, host::anyOctet, host::anyOctet,
                                                 host::anyOctet};

    explicit NetToMediaRows(const IpmibIpv4Hooks &ipv4) : ipv4_(ipv4) {}

    void start() const { follow(ipv4_); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        return ipv4_.find_neighbour(index[0], addressAt(index, 1), &row.platform) == 0 && addOctets(row);
    }
    bool next(const Index *behind, Row &row) const
    {
        const Index index = behind == nullptr ? Index{} : *behind;
        return ipv4_.next_neighbour(index[0], addressAt(index, 1), &row.platform) == 0 && addOctets(row);
    }
    Index indexOf(const Row &row) const
    {
        return {row.platform.if_index, row.address[0], row.address[1], row.address[2], row.address[3]};
    }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {1, [](const Row &row) { return integer(row.platform.if_index); }}, // ipNetToMediaIfIndex
        {2,
         [](const Row &row) {
             return octets(row.platform.link_layer, row.platform.link_layer_size);
         }},                                                            // ipNetToMediaPhysAddress
        {3, [](const Row &row) { return ipAddress(row.address); }},     // ipNetToMediaNetAddress
        {4, [](const Row &row) { return integer(row.platform.type); }}, // ipNetToMediaType
    };

    static bool addOctets(Row &row)
    {
        row.address = octetsOf(row.platform.address);
        return true;
    }

    const IpmibIpv4Hooks &ipv4_;
};

} // namespace

SourcePointer ipNetToMediaTable(const IpmibIpv4Hooks &ipv4)
{
    return std::make_unique<host::RowSource<NetToMediaRows>>(ipNetToMediaEntry, NetToMediaRows(ipv4));
}

} // namespace ipmib::tables
