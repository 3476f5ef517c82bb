// SPDX-License-Identifier: BSD-3-Clause
// ipDefaultRouterTable: the rows of IPv4.

#include "tables/ip/ip_rows.h"
#include "tables/tables.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipDefaultRouterEntry[] = {1, 3, 6, 1, 2, 1, 4, 37, 1};

class RouterRows
{
  public:
    using Row = IpmibIpRouter;
    using Index = std::array<host::SubId, 7>;
    static constexpr host::SubIdRange shape[] = {ofIpv4,         ofIpv4Length,   host::anyOctet,  host::anyOctet,
                                                 host::anyOctet, host::anyOctet, host::anyIfIndex};

    explicit RouterRows(const IpmibIpHooks &ip) : ip_(ip) {}

    void start() const { follow(ip_, IPMIB_FOLLOW_ROUTERS); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const { return ip_.find_router(addressAt(index, 2), index[6], &row) == 0; }
    bool next(const Index *behind, Row &row) const
    {
        const Index index = behind == nullptr ? Index{} : *behind;
        return ip_.next_router(addressAt(index, 2), index[6], &row) == 0;
    }
    Index indexOf(const Row &row) const
    {
        const Ipv4Octets address = octetsOf(row.address);
        return {ipv4Type, ipv4Length, address[0], address[1], address[2], address[3], row.if_index};
    }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {4, [](const Row &row) { return gauge(row.lifetime_s); }}, // ipDefaultRouterLifetime
        {5,
         [](const Row &row) {
             return integer(static_cast<std::uint32_t>(row.preference));
         }}, // ipDefaultRouterPreference
    };

    const IpmibIpHooks &ip_;
};

} // namespace

SourcePointer ipDefaultRouterTable(const IpmibIpHooks &ip)
{
    if (ip.find_router == nullptr || ip.next_router == nullptr) {
        return nullptr;
    }
    return std::make_unique<host::RowSource<RouterRows>>(ipDefaultRouterEntry, RouterRows(ip));
}

} // namespace ipmib::tables
