// SPDX-License-Identifier: BSD-3-Clause
// The device as a whole and its interfaces.
#include "walks/model_parts.h"

#include <algorithm>
#include <set>

namespace ipmib::cli
{
namespace
{

const Identifier systemGroup{1, 3, 6, 1, 2, 1, 1};
const Identifier ipGroup{1, 3, 6, 1, 2, 1, 4};

constexpr std::uint64_t perMegabit = 1'000'000;
constexpr std::uint64_t highestSpeed = 1'000'000; // Mbit/s
constexpr std::uint64_t up = 1;
constexpr Word downStatuses[] = {
    {3, "testing"}, {4, "unknown"}, {5, "dormant"}, {6, "notPresent"}, {7, "lowerLayerDown"}};

template <class Value>
void put(OrderedJson &object, const char *name, const std::optional<Value> &value)
{
    if (value) {
        object[name] = *value;
    }
}

std::optional<std::uint64_t> within(std::optional<std::uint64_t> number, std::uint64_t low, std::uint64_t high)
{
    return number && *number >= low && *number <= high ? number : std::nullopt;
}

std::optional<std::string> notLonger(std::optional<std::string> text, std::size_t longest)
{
    return text && text->size() <= longest ? text : std::nullopt;
}

OrderedJson modelledSystem(const Recording &walk)
{
    constexpr std::size_t longest = 255;
    const WalkRow row = scalarsBelow(walk, systemGroup);
    OrderedJson system = OrderedJson::object();
    put(system, "name", notLonger(row.text(5), longest));
    put(system, "description", notLonger(row.text(1), longest));
    if (const auto objectId = row.identifier(2); objectId && objectId->size() > 2) {
        system["objectId"] = support::identifierText(*objectId);
    }
    put(system, "contact", notLonger(row.text(4), longest));
    put(system, "location", notLonger(row.text(6), longest));
    put(system, "services", within(row.number(7), 0, 127));
    return system;
}

std::string macText(const std::string &octets)
{
    const std::string digits = support::hexDigits(octets);
    std::string text;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        text += (i == 0 ? "" : ":") + digits.substr(i, 2);
    }
    return text;
}

// As one knows it: by ifName, or by ifDescr, which older devices have alone.
std::string uniqueName(const WalkRow &row, const WalkRow &more, std::uint32_t ifIndex, std::set<std::string> &names)
{
    std::string name = more.text(1).value_or(row.text(2).value_or("if" + std::to_string(ifIndex)));
    if (!names.insert(name).second) {
        name += "#" + std::to_string(ifIndex);
        names.insert(name);
    }
    return name;
}

void putSpeed(OrderedJson &interface, const WalkRow &row, const WalkRow &more)
{
    const auto inMegabits = more.number(15);
    const auto inBits = row.number(5);
    if (inMegabits && *inMegabits != 0 && *inMegabits <= highestSpeed) {
        interface["speed"] = *inMegabits;
    } else if (inBits && *inBits % perMegabit == 0) {
        interface["speed"] = *inBits / perMegabit;
    } else if (inBits) {
        interface["speed"] = static_cast<double>(*inBits) / perMegabit;
    }
}

OrderedJson modelledInterface(std::uint32_t ifIndex, const WalkRow &row, const WalkRow &more,
                              std::set<std::string> &names)
{
    constexpr std::size_t macSize = 6;
    OrderedJson interface;
    interface["name"] = uniqueName(row, more, ifIndex, names);
    interface["ifIndex"] = ifIndex;
    put(interface, "type", within(row.number(3), 1, 255));
    if (const auto mtu = within(row.number(4), 68, 65'535)) {
        constexpr std::uint64_t smallestOfIp6 = 1280;
        interface["mtu"] = *mtu;
        if (*mtu < smallestOfIp6) {
            interface["ipv6"] = false;
        }
    }
    putSpeed(interface, row, more);
    if (const auto mac = row.octets(6); mac && mac->size() == macSize) {
        interface["mac"] = macText(*mac);
    }
    put(interface, "alias", notLonger(more.text(18), 64));
    if (const auto admin = row.number(7); admin && *admin != up) {
        interface["up"] = false;
    } else if (const auto oper = row.number(8); oper && *oper != up) {
        interface["down"] = OrderedJson::array({OrderedJson::object({{"from", 0}})});
    }
    putWord(interface, "downStatus", row.number(8), downStatuses);
    if (more.number(16) == isTrue) {
        interface["promiscuous"] = true;
    }
    if (const auto connector = more.number(17); connector && *connector != isTrue) {
        interface["connector"] = false;
    }
    return interface;
}

} // namespace

ModelledInterfaces modelledInterfaces(const Recording &walk)
{
    constexpr std::uint32_t highest = 0x7FFF'FFFF;
    WalkRows rows = rowsBelow(walk, ifEntry);
    WalkRows more = rowsBelow(walk, ifXEntry);
    for (const auto &[index, row] : more) {
        rows[index]; // there may be no ifTable
    }
    ModelledInterfaces interfaces;
    std::set<std::string> names;
    for (const auto &[index, row] : rows) {
        if (index.size() == 1 && index.front() > 0 && index.front() <= highest) {
            interfaces[index.front()] = modelledInterface(index.front(), row, more[index], names);
        }
    }
    return interfaces;
}

OrderedJson modelOf(const Recording &walk, const ObjectTree &tree)
{
    OrderedJson scenario = OrderedJson::object();
    if (const auto ticks = scalarsBelow(walk, systemGroup).number(3)) {
        scenario["uptime"] = *ticks / ticksPerSecond;
    }
    OrderedJson system = modelledSystem(walk);
    addSystemCounters(walk, tree, system);
    if (!system.empty()) {
        scenario["system"] = system;
    }
    const WalkRow ip = scalarsBelow(walk, ipGroup);
    put(scenario, "hopLimit", within(ip.number(26), 0, 255));
    OrderedJson settings = OrderedJson::object();
    if (const auto forwarding = ip.number(1)) {
        settings["forwarding"] = *forwarding == 1;
    }
    put(settings, "defaultTtl", within(ip.number(2), 1, 255));
    put(settings, "reasmTimeout", within(ip.number(13), 0, INT32_MAX));
    if (!settings.empty()) {
        scenario["ipv4"] = settings;
    }
    ModelledInterfaces interfaces = modelledInterfaces(walk);
    addAddresses(walk, interfaces);
    addNeighbours(walk, interfaces);
    addPrefixes(walk, interfaces);
    addRouters(walk, interfaces);
    addInterfaceCounters(walk, tree, interfaces);
    for (auto &[ifIndex, interface] : interfaces) {
        scenario["interfaces"].push_back(std::move(interface));
    }
    return scenario;
}

} // namespace ipmib::cli
