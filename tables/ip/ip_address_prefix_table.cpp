// SPDX-License-Identifier: BSD-3-Clause
// ipAddressPrefixTable: the rows of IPv4.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipAddressPrefixEntry[] = {1, 3, 6, 1, 2, 1, 4, 32, 1};

class PrefixRows
{
  public:
    using Row = IpmibIpPrefix;
    using Index = std::array<host::SubId, 8>;
    static constexpr host::SubIdRange shape[] = {host::anyIfIndex, ofIpv4,         ofIpv4Length,   host::anyOctet,
                                                 host::anyOctet,   host::anyOctet, host::anyOctet, {0, 32}};

    explicit PrefixRows(const IpmibIpHooks &ip) : ip_(ip) {}

    void start() const { follow(ip_, IPMIB_FOLLOW_ADDRESSES); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        return ip_.find_prefix(index[0], addressAt(index, 3), index[7], &row) == 0;
    }
    bool next(const Index *behind, Row &row) const
    {
        const Index index = behind == nullptr ? Index{} : *behind;
        return ip_.next_prefix(index[0], addressAt(index, 3), index[7], &row) == 0;
    }
    Index indexOf(const Row &row) const
    {
        const Ipv4Octets prefix = octetsOf(row.prefix);
        return {row.if_index, ipv4Type, ipv4Length, prefix[0], prefix[1], prefix[2], prefix[3], row.length};
    }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {5, [](const Row &row) { return integer(row.origin); }},        // ipAddressPrefixOrigin
        {6, [](const Row &row) { return truth(row.on_link != 0); }},    // ipAddressPrefixOnLinkFlag
        {7, [](const Row &row) { return truth(row.autonomous != 0); }}, // ipAddressPrefixAutonomousFlag
        {8, [](const Row &row) { return gauge(row.preferred_s); }},     // ipAddressPrefixAdvPreferredLifetime
        {9, [](const Row &row) { return gauge(row.valid_s); }},         // ipAddressPrefixAdvValidLifetime
    };

    const IpmibIpHooks &ip_;
};

} // namespace

SourcePointer ipAddressPrefixTable(const IpmibIpHooks &ip)
{
    if (ip.find_prefix == nullptr || ip.next_prefix == nullptr) {
        return nullptr;
    }
    return std::make_unique<host::RowSource<PrefixRows>>(ipAddressPrefixEntry, PrefixRows(ip));
}

} // namespace ipmib::tables
