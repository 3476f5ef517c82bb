// SPDX-License-Identifier: BSD-3-Clause
// Makes many interfaces, addresses, neighbours and routers from a few numbers. Each interface has random numbers of its
// own, so that one more does not change the others.
#include "generate/generate.h"

#include "generate/random.h"
#include "scenario/forms.h"
#include "scenario/interface_types.h"
#include "scenario/read_rows.h"

#include <algorithm>
#include <vector>

namespace ipmib::simulated
{
namespace
{

using namespace platform;

// What is asked for, for all interfaces together.
struct Numbers {
    std::uint32_t interfaces = 0;
    std::uint32_t addresses = 0; // beside the one that each interface has
    std::uint32_t neighbours = 0;
    std::uint32_t routers = 0;
};
constexpr Numbers most{65'536, 1'000'000, 16'000'000, 65'536};

constexpr std::uint8_t subnetLength = 64; // bits of each interface's network

// An even share of a number for one of the interfaces.
std::uint32_t share(std::uint32_t number, std::uint32_t interfaces, std::uint32_t which)
{
    return number / interfaces + (which < number % interfaces ? 1 : 0);
}

Mac randomMac(Random &random)
{
    Mac mac{0x02}; // locally administered
    const std::uint64_t number = random.next();
    for (std::size_t i = 1; i < mac.size(); ++i) {
        mac[i] = static_cast<std::uint8_t>(number >> (8 * i));
    }
    return mac;
}

// A busy interface: in and out about the same, some of it errors.
CounterSet<Ip6MibStat> randomCounters(Random &random)
{
    constexpr std::uint64_t octetsPerPacket = 800;
    CounterSet<Ip6MibStat> counters;
    const auto rate = static_cast<double>(100 + random.below(100'000)); // packets a second
    const std::uint64_t start = random.below(1'000'000'000'000);
    for (const CounterField<Ip6MibStat> &field : counterFields<Ip6MibStat>()) {
        const std::string_view name = field.name;
        const bool octets = name.ends_with("Octets");
        const bool packets =
            name == "inReceives" || name == "outTransmits" || name == "inForwDatagrams" || name == "outForwDatagrams";
        if (octets) {
            counters.put(field, {start * octetsPerPacket, rate * octetsPerPacket});
        } else if (packets) {
            counters.put(field, {start, rate});
        } else if (name == "inDelivers" || name == "outRequests" || name.ends_with("McastPkts")) {
            counters.put(field, {start / 1'000, rate / 1'000});
        } else if (name.find("Errors") != std::string_view::npos || name.find("Discards") != std::string_view::npos) {
            counters.put(field, {random.below(1'000), rate / 1'000'000});
        }
    }
    return counters;
}

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

// In ascending order, which fills the table without gaps.
void addNeighbours(Random &random, std::uint32_t count, const PackedAddress &subnet, std::uint32_t ifIndex,
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

void addRandomAddress(Random &random, const PackedAddress &subnet, std::uint32_t ifIndex, Device &device)
{
    const std::uint32_t origin = random.below(2) == 0 ? addressOriginManual : addressOriginRandom;
    const auto created = static_cast<std::uint32_t>(random.below(std::uint64_t{device.uptimeS} + 1));
    while (!addAddress(
        {{subnet.high, random.next()}, ifIndex, origin, addressStatePreferred, created, created, subnetLength, false},
        device)) {
    }
}

void addRouter(Random &random, std::uint32_t ifIndex, Device &device)
{
    constexpr std::uint32_t preferences[] = {gatewayPreferenceHigh, gatewayPreferenceMedium, gatewayPreferenceLow};
    constexpr Lifetime advertised{1800, 600};
    const std::uint32_t preference = preferences[random.below(std::size(preferences))];
    while (!device.add(
        Router{linkLocalAddress(interfaceIdentifier(randomMac(random))), ifIndex, preference, advertised})) {
    }
}

// The i-th network of 64 bits within a wider one.
PackedAddress subnetOf(const AddressAndLength &network, std::uint32_t i)
{
    return {network.address.high + i, 0};
}

} // namespace

void generate(const Value &value, std::uint32_t seed, Device &device)
{
    Object object(value);
    const Value interfaces = object.need("interfaces");
    Object details(interfaces);
    Numbers numbers;
    numbers.interfaces = static_cast<std::uint32_t>(details.need("count").number(1, most.interfaces));
    const std::string name = details.need("name").text("how the names of interfaces begin");
    Interface pattern;
    pattern.mtu = details.number("mtu", pattern.mtu, 1280, 65535);
    pattern.type = readInterfaceType(details);
    details.finish();

    AddressAndLength network{{0x2001'0DB8'0000'0000, 0}, 32};
    if (const auto given = object.find("network")) {
        network = readPrefix(*given);
        constexpr int enough = 32; // more bits than interfaces need
        if (network.length > subnetLength ||
            std::uint64_t{1} << std::min(subnetLength - network.length, enough) < numbers.interfaces) {
            given->fail("it has no room for a network of 64 bits for each of " + std::to_string(numbers.interfaces) +
                        " interfaces");
        }
    }
    numbers.addresses = object.number("addresses", 0, 0, most.addresses);
    numbers.neighbours = object.number("neighbours", 0, 0, most.neighbours);
    numbers.routers = object.number("routers", 0, 0, most.routers);
    object.finish();

    for (std::uint32_t i = 0; i < numbers.interfaces; ++i) {
        Random random(seed, i);
        Interface interface = pattern;
        interface.name = name + std::to_string(i);
        interface.ifIndex = device.nextIfIndex();
        interface.mac = randomMac(random);
        interface.linkLocal = Address{linkLocalAddress(interfaceIdentifier(*interface.mac)),
                                      interface.ifIndex,
                                      addressOriginLinkLayer,
                                      addressStatePreferred,
                                      0,
                                      0,
                                      linkLocalPrefixLength,
                                      false};
        interface.ip6Counters = randomCounters(random);
        const std::uint32_t ifIndex = interface.ifIndex;
        if (device.add(std::move(interface)) == nullptr) {
            interfaces.fail("another interface is called " + name + std::to_string(i) + ", or has the last ifIndex");
        }
        const PackedAddress subnet = subnetOf(network, i);
        if (!addAddress(
                {{subnet.high, 1}, ifIndex, addressOriginManual, addressStatePreferred, 0, 0, subnetLength, false},
                device)) {
            value.fail("an interface above has an address of these networks already");
        }
        for (std::uint32_t n = share(numbers.addresses, numbers.interfaces, i); n > 0; --n) {
            addRandomAddress(random, subnet, ifIndex, device);
        }
        addNeighbours(random, share(numbers.neighbours, numbers.interfaces, i), subnet, ifIndex, device);
        for (std::uint32_t n = share(numbers.routers, numbers.interfaces, i); n > 0; --n) {
            addRouter(random, ifIndex, device);
        }
    }
}

} // namespace ipmib::simulated
