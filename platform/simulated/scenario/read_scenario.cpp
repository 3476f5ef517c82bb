// SPDX-License-Identifier: BSD-3-Clause
// Reads a scenario file: the device as a whole, and its interfaces one by one.
#include "scenario/read.h"

#include "core/codes.h"
#include "generate/generate.h"

#include <nlohmann/json.hpp>

#include <charconv>

namespace ipmib::simulated
{
namespace
{

constexpr std::uint32_t longestUptime = UINT32_MAX / 100; // seconds; managers are told hundredths

// "1.3.6.1.4.1.9"
std::vector<std::uint32_t> readObjectId(const Value &value)
{
    constexpr std::size_t longest = 128;
    const std::string &text = value.text("an object identifier");
    std::vector<std::uint32_t> ids;
    const char *at = text.data();
    const char *const end = at + text.size();
    for (;;) {
        const auto [behind, error] = std::from_chars(at, end, ids.emplace_back());
        if (error != std::errc() || (behind != end && *behind != '.') || ids.size() > longest) {
            value.refuse("an object identifier, numbers with dots between them");
        }
        if (behind == end) {
            break;
        }
        at = behind + 1;
    }
    if (ids.size() < 2 || ids[0] > 2 || (ids[0] < 2 && ids[1] >= 40)) {
        value.refuse("an object identifier, numbers with dots between them");
    }
    return ids;
}

constexpr Word results[] = {{"notFound", platform::notFound}, {"noMore", platform::noMore}};

// {"name": "core1", "objectId": "1.3.6.1.4.1.8072.3.2.10", ...}
void readSystemGroup(Object &object, SystemGroup &system)
{
    for (const auto &[name, text] : {std::pair("name", &SystemGroup::name),
                                     {"description", &SystemGroup::description},
                                     {"contact", &SystemGroup::contact},
                                     {"location", &SystemGroup::location}}) {
        if (const auto member = object.find(name)) {
            constexpr std::size_t longest = 255; // of a DisplayString
            system.*text = member->text();
            if ((system.*text).size() > longest) {
                member->fail("a text of the system group has at most 255 bytes");
            }
            system.isThere = true;
        }
    }
    if (const auto member = object.find("objectId")) {
        system.objectId = readObjectId(*member);
        system.isThere = true;
    }
    if (const auto member = object.find("services")) {
        constexpr std::uint32_t most = 127;
        system.services = static_cast<std::uint32_t>(member->number(0, most));
        system.isThere = true;
    }
}

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
    device.tcpConnections = object.number("tcpConnections", device.tcpConnections, 0, UINT32_MAX);
    read("udp", device.udpCounters);
    readSystemGroup(object, device.system);
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

// The devices beside it, if there may be any, go to the fleet.
Device readDevice(const Value &value, std::uint32_t moreSeed, const std::string &folder, Fleet *fleet)
{
    Device device;
    Object object(value);
    object.find("$schema"); // for editors
    if (const auto devices = fleet == nullptr ? std::nullopt : object.find("devices")) {
        fleet->read(*devices, folder);
    }
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
    const std::uint32_t seed = object.number("seed", 0, 0, UINT32_MAX) + moreSeed;
    if (const auto generated = object.find("generate")) {
        generate(*generated, seed, device);
    }
    if (const auto routes = object.find("routes")) {
        readRoutes(*routes, device);
    }
    if (const auto connections = object.find("connections")) {
        readConnections(*connections, device);
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
    readRecorded(object, device.recorded);
    if (const auto faults = object.find("faults")) {
        device.faults = AnswerFaults::read(*faults);
    }
    if (const auto reboots = object.find("reboots")) {
        device.reboots = Schedule::read(*reboots);
        if (device.reboots.isForEver()) {
            reboots->fail("a device that boots comes back: its periods have an end");
        }
    }
    object.finish();
    return device;
}

} // namespace

Device readDevice(const Json &scenario, std::uint32_t seed)
{
    return readDevice(Value(scenario), seed, "", nullptr);
}

Scenario readScenario(const std::string &path)
{
    try {
        const Json json = readJsonFile(path);
        const std::string folder = path.substr(0, path.find_last_of('/') + 1);
        Scenario scenario;
        scenario.device = readDevice(Value(json), 0, folder, &scenario.fleet);
        return scenario;
    } catch (const ScenarioError &error) {
        throw ScenarioError(path + ": " + error.what());
    }
}

} // namespace ipmib::simulated
