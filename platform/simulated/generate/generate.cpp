// SPDX-License-Identifier: BSD-3-Clause
// Makes many interfaces, addresses, prefixes, neighbours and routers from a few numbers. Each interface, and each table
// on it, has random numbers of its own, so that more of one does not change the others.
#include "generate/generate.h"

#include "scenario/forms.h"
#include "scenario/read.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

// What is asked for, for all interfaces together.
struct Numbers {
    std::uint32_t interfaces = 0;
    std::uint32_t addresses = 0; // beside the one that each interface has
    std::uint32_t prefixes = 0;  // beside the networks of the addresses
    std::uint32_t neighbours = 0;
    std::uint32_t routers = 0;
};
constexpr Numbers most{65'536, 1'000'000, 1'000'000, 16'000'000, 65'536};

struct Request {
    Numbers numbers;
    std::string name; // how those of the interfaces begin
    Interface pattern;
    AddressAndLength network{{0x2001'0DB8'0000'0000, 0}, 32};
};

void readInterfaces(const Value &value, Request &request)
{
    Object object(value);
    request.numbers.interfaces = static_cast<std::uint32_t>(object.need("count").number(1, most.interfaces));
    request.name = object.need("name").text("how the names of interfaces begin");
    request.pattern.mtu = object.number("mtu", request.pattern.mtu, 1280, 65535);
    request.pattern.type = readInterfaceType(object);
    object.finish();
}

Request readRequest(Object &object)
{
    Request request;
    Numbers &numbers = request.numbers;
    readInterfaces(object.need("interfaces"), request);
    if (const auto network = object.find("network")) {
        request.network = readPrefix(*network);
        constexpr int enough = 32; // more bits than interfaces need
        if (request.network.length > subnetLength ||
            std::uint64_t{1} << std::min(subnetLength - request.network.length, enough) < numbers.interfaces) {
            network->fail("it has no room for a network of 64 bits for each of " + std::to_string(numbers.interfaces) +
                          " interfaces");
        }
    }
    numbers.addresses = object.number("addresses", 0, 0, most.addresses);
    numbers.prefixes = object.number("prefixes", 0, 0, most.prefixes);
    numbers.neighbours = object.number("neighbours", 0, 0, most.neighbours);
    numbers.routers = object.number("routers", 0, 0, most.routers);
    object.finish();
    return request;
}

// An even share of a number for interface number i.
std::uint32_t share(std::uint32_t number, std::uint32_t interfaces, std::uint32_t i)
{
    return number / interfaces + (i < number % interfaces ? 1 : 0);
}

void addInterface(const Value &value, const Request &request, std::uint32_t seed, std::uint32_t i, Device &device)
{
    enum Stream : std::uint64_t { itself, addresses, neighbours, routers, streams };
    const auto random = [seed, i](Stream stream) { return Random(seed, i * std::uint64_t{streams} + stream); };
    const Numbers &numbers = request.numbers;

    Random own = random(itself);
    Interface interface = request.pattern;
    interface.name = request.name + std::to_string(i);
    interface.ifIndex = device.nextIfIndex();
    interface.mac = randomMac(own);
    interface.ip6Counters = randomCounters(own);
    interface.linkLocal = automaticLinkLocal(interface);
    const std::uint32_t ifIndex = interface.ifIndex;
    if (device.add(std::move(interface)) == nullptr) {
        value.fail("another interface is called " + request.name + std::to_string(i) + ", or has the last ifIndex");
    }
    const PackedAddress subnet{request.network.address.high + i, 0}; // the i-th one within the network
    if (!addAddress({{subnet.high, 1},
                     ifIndex,
                     platform::addressOriginManual,
                     platform::addressStatePreferred,
                     0,
                     0,
                     subnetLength,
                     false},
                    device)) {
        value.fail("an interface above has an address of these networks already");
    }
    const auto shareOf = [&](std::uint32_t number) { return share(number, numbers.interfaces, i); };
    addRandomAddresses(random(addresses), shareOf(numbers.addresses), subnet, ifIndex, device);
    // Their stream came later than the others, whose numbers a seed goes on to mean.
    addRandomPrefixes(Random(seed, ~std::uint64_t{i}), shareOf(numbers.prefixes), ifIndex, device);
    addRandomNeighbours(random(neighbours), shareOf(numbers.neighbours), subnet, ifIndex, device);
    addRandomRouters(random(routers), shareOf(numbers.routers), ifIndex, device);
}

} // namespace

void generate(const Value &value, std::uint32_t seed, Device &device)
{
    Object object(value);
    const Request request = readRequest(object);
    for (std::uint32_t i = 0; i < request.numbers.interfaces; ++i) {
        addInterface(value, request, seed, i, device);
    }
}

} // namespace ipmib::simulated
