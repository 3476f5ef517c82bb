// SPDX-License-Identifier: BSD-3-Clause
// ipAddrTable: a row for each IPv4 address.

#include "tables/ip/ipv4.h"
#include "tables/tables.h"
#include "tables/values.h"

#include "host/row_source.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipAddrEntry[] = {1, 3, 6, 1, 2, 1, 4, 20, 1};

class IpAddrRows
{
  public:
    struct Row {
        IpmibIpv4Address platform;
        Ipv4Octets address;
        Ipv4Octets mask;
    };
    using Index = std::array<host::SubId, 4>;
    static constexpr host::SubIdRange shape[] = {host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet};

    explicit IpAddrRows(const IpmibIpv4Hooks &ipv4) : ipv4_(ipv4) {}

    void start() const { follow(ipv4_); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        return ipv4_.find_address(addressAt(index, 0), &row.platform) == 0 && addOctets(row);
    }
    bool next(const Index *behind, Row &row) const
    {
        return ipv4_.next_address(behind == nullptr ? 0 : addressAt(*behind, 0), &row.platform) == 0 && addOctets(row);
    }
    Index indexOf(const Row &row) const { return {row.address[0], row.address[1], row.address[2], row.address[3]}; }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {1, [](const Row &row) { return ipAddress(row.address); }},               // ipAdEntAddr
        {2, [](const Row &row) { return integer(row.platform.if_index); }},       // ipAdEntIfIndex
        {3, [](const Row &row) { return ipAddress(row.mask); }},                  // ipAdEntNetMask
        {4, [](const Row &row) { return integer(row.platform.broadcast_bit); }},  // ipAdEntBcastAddr
        {5, [](const Row &row) { return integer(row.platform.reassembly_max); }}, // ipAdEntReasmMaxSize
    };

    static bool addOctets(Row &row)
    {
        row.address = octetsOf(row.platform.address);
        row.mask = octetsOf(maskOf(row.platform.prefix_length));
        return true;
    }

    const IpmibIpv4Hooks &ipv4_;
};

} // namespace

SourcePointer ipAddrTable(const IpmibIpv4Hooks &ipv4)
{
    return std::make_unique<host::RowSource<IpAddrRows>>(ipAddrEntry, IpAddrRows(ipv4));
}

} // namespace ipmib::tables
