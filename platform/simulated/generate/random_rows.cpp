// SPDX-License-Identifier: BSD-3-Clause
// Rows made of random numbers.
#include "generate/generate.h"

#include "scenario/read.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace ipmib::simulated
{
namespace
{

using namespace platform;

NeighbourState randomState(Random &random)
{
    const std::uint64_t percent = random.below(100);
    return percent < 30   ? NeighbourState::reachable
           : percent < 96 ? NeighbourState::stale
           : percent < 97 ? NeighbourState::delay
           : percent < 98 ? NeighbourState::probe
                          : NeighbourState::incomplete;
}

// Of ten, one is known by its link-local address.
Neighbour randomNeighbour(Random &random, const PackedAddress &subnet, std::uint32_t ifIndex, std::uint32_t uptimeS)
{
    const Mac mac = randomMac(random);
    const PackedAddress address =
        random.below(10) == 0 ? linkLocalAddress(interfaceIdentifier(mac)) : PackedAddress{subnet.high, random.next()};
    Neighbour neighbour{address.high, address.low, ifIndex, 0, {}, NeighbourType::dynamic, randomState(random)};
    if (neighbour.state != NeighbourState::incomplete) {
        std::copy(mac.begin(), mac.end(), neighbour.linkLayer);
    }
    neighbour.lastUpdatedS = static_cast<std::uint32_t>(random.below(std::uint64_t{uptimeS} + 1));
    return neighbour;
}

} // namespace

Mac randomMac(Random &random)
{
    Mac mac{0x02}; // locally administered
    const std::uint64_t number = random.next();
    for (std::size_t i = 1; i < mac.size(); ++i) {
        mac[i] = static_cast<std::uint8_t>(number >> (8 * i));
    }
    return mac;
}

CounterSet<IpmibIpCounters> randomCounters(Random &random)
{
    constexpr std::uint64_t octetsPerPacket = 800;
    CounterSet<IpmibIpCounters> counters;
    const auto rate = static_cast<double>(100 + random.below(100'000)); // packets a second
    const std::uint64_t start = random.below(1'000'000'000'000);
    for (const CounterField<IpmibIpCounters> &field : counterFields<IpmibIpCounters>()) {
        const std::string_view name = field.name;
        const bool octets = name == "inOctets" || name == "outOctets";
        const bool packets =
            name == "inReceives" || name == "outTransmits" || name == "inForwDatagrams" || name == "outForwDatagrams";
        if (octets) {
            counters.put(field, {start * octetsPerPacket, rate * octetsPerPacket});
        } else if (packets) {
            counters.put(field, {start, rate});
        } else if (name == "inDelivers" || name == "outRequests" || name.ends_with("McastPkts")) {
            counters.put(field, {start / 1'000, rate / 1'000});
        } else if (name.find("Errors") != std::string_view::npos ||
                   (name.find("Discards") != std::string_view::npos && field.which != IPMIB_IP_ROUTING_DISCARDS)) {
            counters.put(field, {random.below(1'000), rate / 1'000'000});
        }
    }
    return counters;
}

// In ascending order, which fills the table without gaps.
void addRandomNeighbours(Random random, std::uint32_t count, const PackedAddress &subnet, std::uint32_t ifIndex,
                         Device &device)
{
    std::vector<Neighbour> rows;
    rows.reserve(count);
    while (rows.size() < count) {
        while (rows.size() < count) {
            rows.push_back(randomNeighbour(random, subnet, ifIndex, device.uptimeS));
        }
        std::stable_sort(rows.begin(), rows.end(), ByNeighbourKey{});
        const auto same = [](const Neighbour &a, const Neighbour &b) { return a.key() == b.key(); };
        rows.erase(std::unique(rows.begin(), rows.end(), same), rows.end());
    }
    for (const Neighbour &row : rows) {
        device.add(row);
    }
}

void addRandomAddresses(Random random, std::uint32_t count, const PackedAddress &subnet, std::uint32_t ifIndex,
                        Device &device)
{
    while (count > 0) {
        const std::uint32_t origin = random.below(2) == 0 ? addressOriginManual : addressOriginRandom;
        const auto created = static_cast<std::uint32_t>(random.below(std::uint64_t{device.uptimeS} + 1));
        const Address address{{subnet.high, random.next()},
                              ifIndex,
                              origin,
                              addressStatePreferred,
                              created,
                              created,
                              subnetLength,
                              false};
        count -= addAddress(address, device) ? 1 : 0;
    }
}

void addRandomPrefixes(Random random, std::uint32_t count, std::uint32_t ifIndex, Device &device)
{
    constexpr std::uint64_t uniqueLocal = 0xFD00'0000'0000'0000;
    while (count > 0) {
        const PackedAddress network{uniqueLocal | random.next() >> 8, 0};
        const Prefix prefix{network, ifIndex, prefixOriginManual, {}, {}, subnetLength, prefixFlagOnLink};
        count -= device.add(prefix) ? 1 : 0;
    }
}

void addRandomRouters(Random random, std::uint32_t count, std::uint32_t ifIndex, Device &device)
{
    constexpr std::uint32_t preferences[] = {gatewayPreferenceHigh, gatewayPreferenceMedium, gatewayPreferenceLow};
    constexpr Lifetime advertised{1800, 600};
    while (count > 0) {
        const PackedAddress address = linkLocalAddress(interfaceIdentifier(randomMac(random)));
        const Router router{address, ifIndex, preferences[random.below(std::size(preferences))], advertised};
        count -= device.add(router) ? 1 : 0;
    }
}

} // namespace ipmib::simulated
