// SPDX-License-Identifier: BSD-3-Clause
// Reads a scenario file: the device as a whole, and its interfaces one by one.
#include "scenario/read.h"

#include "core/codes.h"
#include "generate/generate.h"

#include <nlohmann/json.hpp>

namespace ipmib::simulated
{
namespace
{

constexpr std::uint32_t longestUptime = UINT32_MAX / 100; // seconds; managers are told hundredths

constexpr Word results[] = {{"notFound", platform::notFound}, {"noMore", platform::noMore}};

void readSystem(const Value &value, Device &device)
{
    Object object(value);
    const auto read = [&object]<class Counters>(const char *name, Counters &counters) {
        if (const auto member = object.find(name)) {
            counters = Counters::read(*member);
        }
    };
    read("ipv6", device.systemIp6Counters);
    read("ipv4", device.systemIp4Counters);
    read("icmp", device.icmp6);
    read("ipv4Icmp", device.icmp4);
    read("tcp", device.tcpCounters);
    device.tcpConnections = object.number("tcpConnections", 0, 0, UINT32_MAX);
    read("udp", device.udpCounters);
    object.finish();
}

// {"ipv6": {"down": [...]}}
void readServices(const Value &value, Device &device)
{
    Object object(value);
    const auto read = [&object](const char *name, Schedule &down) {
        const auto service = object.find(name);
        if (!service) {
            return;
        }
        Object state(*service);
        down = Schedule::read(state.need("down"));
        state.finish();
    };
    read("ipv6", device.ip6Down);
    read("ipv4", device.ip4Down);
    object.finish();
}

// {"service": "IP6_GetIfStat", "interface": "eth1", "result": "noMore", "times": [...]}
void readFailure(const Value &value, Device &device)
{
    Object object(value);
    const Value name = object.need("service");
    const auto service = serviceNamed(name.text("the name of a service"));
    if (!service) {
        name.refuse("the name of a service, as ipmib/platform.h spells it");
    }
    Failure failure{*service, 0, infoOf(*service).failure, Schedule::always()};
    if (const auto interface = object.find("interface")) {
        const Interface *found = device.named(interface->text("the name of an interface"));
        if (found == nullptr) {
            interface->refuse("the name of an interface of this device");
        }
        if (!infoOf(*service).ofInterface) {
            interface->fail(std::string(infoOf(*service).name) + " is not asked about one interface");
        }
        failure.ifIndex = found->ifIndex;
    }
    if (const auto result = object.find("result")) {
        failure.result =
            result->isNumber() ? static_cast<std::uint32_t>(result->number(0, UINT32_MAX)) : result->word(results);
    }
    if (const auto times = object.find("times")) {
        failure.schedule = Schedule::read(*times);
    }
    object.finish();
    device.failures.add(failure);
}

Device readDevice(const Value &value)
{
    Device device;
    Object object(value);
    object.find("$schema"); // for editors
    if (const auto description = object.find("description")) {
        description->text();
    }
    device.uptimeS = object.number("uptime", 0, 0, longestUptime);
    device.hopLimit = object.number("hopLimit", device.hopLimit, 0, 255);
    if (const auto ipv4 = object.find("ipv4")) {
        readIpv4Settings(*ipv4, device.ip4Settings);
    }
    if (const auto interfaces = object.find("interfaces")) {
        interfaces->each([&device](const Value &interface) { readInterface(interface, device); });
    }
    const std::uint32_t seed = object.number("seed", 0, 0, UINT32_MAX);
    if (const auto generated = object.find("generate")) {
        generate(*generated, seed, device);
    }
    if (const auto routes = object.find("routes")) {
        readRoutes(*routes, device);
    }
    if (const auto system = object.find("system")) {
        readSystem(*system, device);
    }
    if (const auto services = object.find("services")) {
        readServices(*services, device);
    }
    if (const auto failures = object.find("failures")) {
        failures->each([&device](const Value &failure) { readFailure(failure, device); });
    }
    object.finish();
    return device;
}

} // namespace

Device readScenario(const std::string &path)
{
    try {
        const Json json = readJsonFile(path);
        return readDevice(Value(json));
    } catch (const ScenarioError &error) {
        throw ScenarioError(path + ": " + error.what());
    }
}

} // namespace ipmib::simulated
