// SPDX-License-Identifier: BSD-3-Clause
// ipv4InterfaceTable and ipv6ScopeZoneIndexTable: a row for each interface with that version of IP.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

using IpInterfaceColumn = host::RowColumn<IpmibIpInterface>;

constexpr host::SubId ipv4InterfaceEntry[] = {1, 3, 6, 1, 2, 1, 4, 28, 1};
constexpr host::SubId ipv6ScopeZoneIndexEntry[] = {1, 3, 6, 1, 2, 1, 4, 36, 1};

constexpr IpInterfaceColumn ipv4Columns[] = {
    {2, [](const IpmibIpInterface &row) { return integer(row.reasm_max); }},   // ipv4InterfaceReasmMaxSize
    {3, [](const IpmibIpInterface &row) { return integer(row.enabled); }},     // ipv4InterfaceEnableStatus
    {4, [](const IpmibIpInterface &row) { return gauge(row.retransmit_ms); }}, // ipv4InterfaceRetransmitTime
};

// The zones of the wider scopes have no numbers of their own: an interface lies in one of each, the default.
Cell defaultZone(const IpmibIpInterface &)
{
    return gauge(0);
}

constexpr IpInterfaceColumn zoneColumns[] = {
    {2, [](const IpmibIpInterface &row) { return gauge(row.if_index); }}, // ipv6ScopeZoneIndexLinkLocal
    {3, defaultZone},                                                     // ipv6ScopeZoneIndex3
    {4, defaultZone},                                                     // ipv6ScopeZoneIndexAdminLocal
    {5, defaultZone},                                                     // ipv6ScopeZoneIndexSiteLocal
    {6, defaultZone},                                                     // ipv6ScopeZoneIndex6
    {7, defaultZone},                                                     // ipv6ScopeZoneIndex7
    {8, defaultZone},                                                     // ipv6ScopeZoneIndexOrganizationLocal
    {9, defaultZone},                                                     // ipv6ScopeZoneIndex9
    {10, defaultZone},                                                    // ipv6ScopeZoneIndexA
    {11, defaultZone},                                                    // ipv6ScopeZoneIndexB
    {12, defaultZone},                                                    // ipv6ScopeZoneIndexC
    {13, defaultZone},                                                    // ipv6ScopeZoneIndexD
};

class IpInterfaceRows
{
  public:
    using Row = IpmibIpInterface;
    using Index = std::array<host::SubId, 1>;
    static constexpr host::SubIdRange shape[1] = {host::anyIfIndex};

    IpInterfaceRows(const IpmibIpHooks &ip, std::uint32_t version, std::span<const IpInterfaceColumn> columns)
        : ip_(ip), version_(version), columns_(columns)
    {
    }

    void start() const { follow(ip_, version_ == IPMIB_IPV4 ? +IPMIB_FOLLOW_ADDRESSES : 0u); }
    std::span<const IpInterfaceColumn> columns() const { return columns_; }
    bool find(const Index &index, Row &row) const { return ip_.find_interface(version_, index[0], &row) == 0; }
    bool next(const Index *behind, Row &row) const
    {
        return ip_.next_interface(version_, behind == nullptr ? 0 : (*behind)[0], &row) == 0;
    }
    Index indexOf(const Row &row) const { return {row.if_index}; }

  private:
    const IpmibIpHooks &ip_;
    std::uint32_t version_;
    std::span<const IpInterfaceColumn> columns_;
};

} // namespace

std::vector<SourcePointer> ipInterfaceTables(const IpmibIpHooks &ip)
{
    using Source = host::RowSource<IpInterfaceRows>;
    std::vector<SourcePointer> sources;
    if (ip.find_interface != nullptr && ip.next_interface != nullptr) {
        sources.push_back(std::make_unique<Source>(ipv4InterfaceEntry, IpInterfaceRows(ip, IPMIB_IPV4, ipv4Columns)));
        sources.push_back(
            std::make_unique<Source>(ipv6ScopeZoneIndexEntry, IpInterfaceRows(ip, IPMIB_IPV6, zoneColumns)));
    }
    return sources;
}

} // namespace ipmib::tables
