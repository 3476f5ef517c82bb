// SPDX-License-Identifier: BSD-3-Clause
// inetCidrRouteTable: a row for each next hop of each route, both versions of IP.

#include "tables/forwarding/routes.h"

namespace ipmib::tables
{
namespace
{

constexpr host::SubId inetCidrRouteEntry[] = {1, 3, 6, 1, 2, 1, 4, 24, 7, 1};

// The places of an index.
constexpr std::size_t longestAddress = sizeof(IpmibRouteKey::destination);
constexpr std::size_t longestNextHop = sizeof(IpmibRouteKey::next_hop);
constexpr std::size_t policyNumbers = IPMIB_ROUTE_POLICY_NUMBERS;
constexpr std::size_t policyStart = std::size(zeroDotZero); // all policies begin with this
constexpr std::size_t longestPolicy = policyStart + policyNumbers;
enum Place : std::size_t {
    destinationType,
    destinationSize,
    destination,
    prefixLength = destination + longestAddress,
    policySize,
    policy,
    nextHopType = policy + longestPolicy,
    nextHopSize,
    nextHop,
    places = nextHop + longestNextHop
};

using Index = std::array<host::SubId, places>;

constexpr std::array<host::SubIdRange, places> routeShape()
{
    std::array<host::SubIdRange, places> shape;
    shape.fill(host::anyOctet);
    shape[destinationType] = {IPMIB_IPV4, IPMIB_IPV6};
    shape[destinationSize] = {ipv4Length, longestAddress, true};
    shape[prefixLength] = {0, longestAddress * 8};
    shape[policySize] = {policyStart, longestPolicy, true};
    for (std::size_t i = 0; i < longestPolicy; ++i) {
        shape[policy + i] = i < policyStart ? host::only(zeroDotZero[i]) : host::SubIdRange{};
    }
    shape[nextHopType] = {IPMIB_NEXT_HOP_NONE, IPMIB_NEXT_HOP_IPV6Z};
    shape[nextHopSize] = host::lengthUpTo(longestNextHop);
    return shape;
}

// The policy of a row is zeroDotZero and behind it its numbers, without the zeros in front: in that form too a smaller
// one comes first.
host::SubId significantNumbers(const std::uint32_t (&numbers)[policyNumbers])
{
    const auto first = std::ranges::find_if(numbers, [](std::uint32_t number) { return number != 0; });
    return static_cast<host::SubId>(std::end(numbers) - first);
}

// False when no row has such a policy, but only smaller ones up to that of the key, and greater ones.
bool readPolicy(const Index &index, IpmibRouteKey &key)
{
    const std::size_t count = index[policySize] - policyStart;
    const auto first = index.begin() + policy + policyStart;
    std::ranges::fill(key.policy, 0);
    if (count == 0 || *first != 0) {
        std::copy_n(first, count, std::end(key.policy) - count);
        return true;
    }
    std::fill_n(std::end(key.policy) - count + 1, count - 1, UINT32_MAX);
    return false;
}

void copyOctets(const Index &index, std::size_t place, std::span<std::uint8_t> octets)
{
    for (std::size_t i = 0; i < octets.size(); ++i) {
        octets[i] = static_cast<std::uint8_t>(index[place + i]);
    }
}

// False when no row can have this index: then the rows behind the key are those behind the index.
bool readKey(const Index &index, IpmibRouteKey &key)
{
    const host::SubId size = index[destinationType] == IPMIB_IPV6 ? longestAddress : ipv4Length;
    if (index[destinationSize] != size) { // too long for IPv4, or too short for IPv6
        key = behind(ipv4Key(UINT32_MAX, behindAllLengths));
        return false;
    }
    key.version = index[destinationType];
    copyOctets(index, destination, key.destination);
    key.prefix_length = index[prefixLength];
    key.next_hop_type = index[nextHopType];
    key.next_hop_size = index[nextHopSize];
    copyOctets(index, nextHop, key.next_hop);
    if (!readPolicy(index, key)) {
        key.next_hop_type = UINT32_MAX;
        return false;
    }
    return true;
}

class RouteRows
{
  public:
    using Row = IpmibRoute;
    using Index = tables::Index;
    static constexpr std::array<host::SubIdRange, places> shape = routeShape();

    explicit RouteRows(const IpmibRouteHooks &routes) : routes_(routes) {}

    void start() const { follow(routes_); }
    bool areRead() const { return tables::areRead(routes_); }
    std::span<const host::RowColumn<Row>> columns() const { return list; }
    bool find(const Index &index, Row &row) const
    {
        return readKey(index, row.key) && routes_.find(&row.key, &row) == 0;
    }
    bool next(const Index *behind, Row &row) const
    {
        row.key = {};
        if (behind != nullptr) {
            readKey(*behind, row.key);
        }
        return routes_.next(&row.key, &row) == 0;
    }
    Index indexOf(const Row &row) const
    {
        const IpmibRouteKey &key = row.key;
        Index index{};
        index[destinationType] = key.version;
        index[destinationSize] = key.version == IPMIB_IPV6 ? longestAddress : ipv4Length;
        std::copy_n(key.destination, index[destinationSize], index.begin() + destination);
        index[prefixLength] = key.prefix_length;
        const host::SubId numbers = significantNumbers(key.policy);
        index[policySize] = policyStart + numbers;
        std::copy_n(std::end(key.policy) - numbers, numbers, index.begin() + policy + policyStart);
        index[nextHopType] = key.next_hop_type;
        index[nextHopSize] = std::min<std::uint32_t>(key.next_hop_size, longestNextHop);
        std::copy_n(key.next_hop, index[nextHopSize], index.begin() + nextHop);
        return index;
    }

  private:
    static constexpr std::uint32_t lastProtocol = 20;
    static constexpr host::RowColumn<Row> list[] = {
        {7, [](const Row &row) { return integer(row.if_index); }},                            // inetCidrRouteIfIndex
        {8, [](const Row &row) { return integer(row.type); }},                                // inetCidrRouteType
        {9, [](const Row &row) { return protocol(row, lastProtocol); }},                      // inetCidrRouteProto
        {10, [](const Row &row) { return gauge(row.age_s); }},                                // inetCidrRouteAge
        {11, [](const Row &row) { return gauge(row.next_hop_as); }},                          // inetCidrRouteNextHopAS
        {12, [](const Row &row) { return integer(static_cast<std::uint32_t>(row.metric)); }}, // inetCidrRouteMetric1
        {13, noSuchMetric},                                                                   // inetCidrRouteMetric2
        {14, noSuchMetric},                                                                   // inetCidrRouteMetric3
        {15, noSuchMetric},                                                                   // inetCidrRouteMetric4
        {16, noSuchMetric},                                                                   // inetCidrRouteMetric5
        {17, [](const Row &) { return integer(rowActive); }},                                 // inetCidrRouteStatus
    };

    const IpmibRouteHooks &routes_;
};

} // namespace

SourcePointer inetCidrRouteTable(const IpmibRouteHooks &routes)
{
    return std::make_unique<host::RowSource<RouteRows>>(inetCidrRouteEntry, RouteRows(routes));
}

} // namespace ipmib::tables
