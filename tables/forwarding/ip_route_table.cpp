// SPDX-License-Identifier: BSD-3-Clause
// ipRouteTable: a row for each IPv4 destination, which is the first of its routes, that with the shortest prefix.

#include "tables/forwarding/routes.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId ipRouteEntry[] = {1, 3, 6, 1, 2, 1, 4, 21, 1};

Cell oldType(std::uint32_t type)
{
    constexpr std::uint64_t other = 1;
    constexpr std::uint64_t direct = 3;
    constexpr std::uint64_t indirect = 4;
    return integer(type == IPMIB_ROUTE_LOCAL ? direct : type == IPMIB_ROUTE_REMOTE ? indirect : other);
}

class DestinationRows
{
  public:
    struct Row {
        IpmibRoute route;
        Ipv4Octets destination;
        Ipv4Octets mask;
        Ipv4Octets nextHop;
    };
    using Index = std::array<host::SubId, 4>;
    static constexpr host::SubIdRange shape[] = {host::anyOctet, host::anyOctet, host::anyOctet, host::anyOctet};

    explicit DestinationRows(const IpmibRouteHooks &routes) : routes_(routes) {}

    void start() const { follow(routes_); }
    bool areRead() const { return tables::areRead(routes_); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        const std::uint32_t destination = addressAt(index, 0);
        return behind(destination == 0 ? IpmibRouteKey{} : allOf(destination - 1), row) &&
               ipv4Destination(row.route.key) == destination;
    }
    bool next(const Index *index, Row &row) const
    {
        return behind(index == nullptr ? IpmibRouteKey{} : allOf(addressAt(*index, 0)), row);
    }
    Index indexOf(const Row &row) const
    {
        return {row.destination[0], row.destination[1], row.destination[2], row.destination[3]};
    }

  private:
    static constexpr std::uint32_t lastProtocol = 14;
    static constexpr host::RowColumn<Row> list[] = {
        {1, [](const Row &row) { return ipAddress(row.destination); }},                            // ipRouteDest
        {2, [](const Row &row) { return integer(row.route.if_index); }},                           // ipRouteIfIndex
        {3, [](const Row &row) { return integer(static_cast<std::uint32_t>(row.route.metric)); }}, // ipRouteMetric1
        {4, [](const Row &row) { return noSuchMetric(row.route); }},                               // ipRouteMetric2
        {5, [](const Row &row) { return noSuchMetric(row.route); }},                               // ipRouteMetric3
        {6, [](const Row &row) { return noSuchMetric(row.route); }},                               // ipRouteMetric4
        {7, [](const Row &row) { return ipAddress(row.nextHop); }},                                // ipRouteNextHop
        {8, [](const Row &row) { return oldType(row.route.type); }},                               // ipRouteType
        {9, [](const Row &row) { return protocol(row.route, lastProtocol); }},                     // ipRouteProto
        {10, [](const Row &row) { return age(row.route); }},                                       // ipRouteAge
        {11, [](const Row &row) { return ipAddress(row.mask); }},                                  // ipRouteMask
        {12, [](const Row &row) { return noSuchMetric(row.route); }},                              // ipRouteMetric5
        {13, [](const Row &) { return objectId(zeroDotZero); }},                                   // ipRouteInfo
    };

    // A key behind all rows of a destination.
    static IpmibRouteKey allOf(std::uint32_t destination) { return ipv4Key(destination, behindAllLengths); }

    bool behind(const IpmibRouteKey &key, Row &row) const
    {
        if (routes_.next(&key, &row.route) != 0 || row.route.key.version != IPMIB_IPV4) {
            return false;
        }
        row.destination = octetsOf(ipv4Destination(row.route.key));
        row.mask = octetsOf(maskOf(row.route.key.prefix_length));
        row.nextHop = ipv4NextHop(row.route.key);
        return true;
    }

    const IpmibRouteHooks &routes_;
};

} // namespace

SourcePointer ipRouteTable(const IpmibRouteHooks &routes)
{
    return std::make_unique<host::RowSource<DestinationRows>>(ipRouteEntry, DestinationRows(routes));
}

} // namespace ipmib::tables
