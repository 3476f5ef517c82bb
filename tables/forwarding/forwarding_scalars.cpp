// SPDX-License-Identifier: BSD-3-Clause
// The scalars of the IP-FORWARD-MIB: how many rows its tables have, and how many routes had no room there.

#include "tables/forwarding/routes.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipForward[] = {1, 3, 6, 1, 2, 1, 4, 24};

class ForwardingScalars
{
  public:
    struct Row {
        std::uint64_t ipv4;
        std::uint64_t ipv6;
        std::uint64_t discards;
    };

    explicit ForwardingScalars(const IpmibRouteHooks &routes) : routes_(routes) {}

    void start() const { follow(routes_); }
    bool areRead() const { return tables::areRead(routes_); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool read(Row &row) const
    {
        row = {routes_.count(IPMIB_IPV4), routes_.count(IPMIB_IPV6), routes_.discards()};
        return true;
    }

  private:
    static constexpr host::RowColumn<Row> list[] = {
        {3, [](const Row &row) { return gauge(row.ipv4); }},            // ipCidrRouteNumber
        {6, [](const Row &row) { return gauge(row.ipv4 + row.ipv6); }}, // inetCidrRouteNumber
        {8, [](const Row &row) { return counter32(row.discards); }},    // inetCidrRouteDiscards
    };

    const IpmibRouteHooks &routes_;
};

} // namespace

SourcePointer forwardingScalars(const IpmibRouteHooks &routes)
{
    using Rows = host::ScalarRows<ForwardingScalars>;
    return std::make_unique<host::RowSource<Rows>>(ipForward, Rows(ForwardingScalars(routes)));
}

} // namespace ipmib::tables
