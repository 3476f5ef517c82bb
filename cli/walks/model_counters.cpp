// SPDX-License-Identifier: BSD-3-Clause
// Counters, each beginning with what the walk has of it. Scenarios call them as the columns are called.
#include "walks/model_parts.h"

#include <algorithm>
#include <cctype>

namespace ipmib::cli
{
namespace
{

const Identifier systemStatsEntry{1, 3, 6, 1, 2, 1, 4, 31, 1, 1};
const Identifier ifStatsEntry{1, 3, 6, 1, 2, 1, 4, 31, 3, 1};
const Identifier icmpStatsEntry{1, 3, 6, 1, 2, 1, 5, 29, 1};
const Identifier icmpMsgStatsEntry{1, 3, 6, 1, 2, 1, 5, 30, 1};
const Identifier tcpGroup{1, 3, 6, 1, 2, 1, 6};
const Identifier udpGroup{1, 3, 6, 1, 2, 1, 7};

struct CounterColumn {
    const char *name;
    std::uint32_t column;
    std::uint32_t wide = 0; // the column of the same with 64 bits, in ifXTable for those of ifTable
};

constexpr CounterColumn ofLinks[] = {
    {"inOctets", 10, 6},   {"inUcastPkts", 11, 7},   {"inDiscards", 13},  {"inErrors", 14},  {"inUnknownProtos", 15},
    {"outOctets", 16, 10}, {"outUcastPkts", 17, 11}, {"outDiscards", 19}, {"outErrors", 20},
};
constexpr CounterColumn ofLinksWide[] = {
    {"inMulticastPkts", 2, 8}, {"inBroadcastPkts", 3, 9}, {"outMulticastPkts", 4, 12}, {"outBroadcastPkts", 5, 13}};
constexpr CounterColumn ofTcp[] = {{"activeOpens", 5},  {"passiveOpens", 6}, {"attemptFails", 7},
                                   {"estabResets", 8},  {"inSegs", 10, 17},  {"outSegs", 11, 18},
                                   {"retransSegs", 12}, {"inErrs", 14},      {"outRsts", 15}};
constexpr CounterColumn ofUdp[] = {{"inDatagrams", 1, 8}, {"noPorts", 2}, {"inErrors", 3}, {"outDatagrams", 4, 9}};

constexpr CounterColumn ofIcmp[] = {{"inMsgs", 2}, {"inErrors", 3}, {"outMsgs", 4}};
constexpr CounterColumn ofIcmpTypes[] = {{"in", 3}, {"out", 4}};

std::optional<std::uint64_t> valueOf(const WalkRow &row, const WalkRow &wide, const CounterColumn &counter)
{
    const auto value = counter.wide == 0 ? std::nullopt : wide.number(counter.wide);
    return value ? value : row.number(counter.column);
}

template <std::size_t count>
void putCounters(const WalkRow &row, const WalkRow &wide, const CounterColumn (&counters)[count], OrderedJson &object)
{
    for (const CounterColumn &counter : counters) {
        if (const auto value = valueOf(row, wide, counter)) {
            object[counter.name] = *value;
        }
    }
}

// "ipIfStatsHCInOctets" is "inOctets" in a scenario; empty for a column that is no counter.
std::string scenarioName(std::string name, bool &isWide)
{
    for (const std::string_view table : {"ipSystemStats", "ipIfStats"}) {
        if (name.starts_with(table)) {
            name.erase(0, table.size());
        }
    }
    isWide = name.starts_with("HC");
    name.erase(0, isWide ? 2 : 0);
    if (name == "DiscontinuityTime" || name == "RefreshRate" || name.empty()) {
        return "";
    }
    name.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(name.front())));
    return name;
}

OrderedJson ipCounters(const WalkRow &row, const Identifier &entry, const ObjectTree &tree)
{
    constexpr std::uint32_t lastColumn = 47; // of both tables
    OrderedJson narrow = OrderedJson::object();
    OrderedJson wide = OrderedJson::object();
    for (std::uint32_t column = 1; column <= lastColumn; ++column) {
        Identifier place = entry;
        place.push_back(column);
        const auto value = row.number(column);
        const Object *object = tree.find(place);
        bool isWide = false;
        const std::string name = object == nullptr ? "" : scenarioName(object->node->pszName, isWide);
        if (value && !name.empty() && object->isServed) {
            (isWide ? wide : narrow)[name] = *value;
        }
    }
    narrow.update(wide);
    return narrow;
}

void putGroup(OrderedJson &object, const char *name, const OrderedJson &members)
{
    if (!members.empty()) {
        object[name] = members;
    }
}

} // namespace

void addInterfaceCounters(const Recording &walk, const ObjectTree &tree, ModelledInterfaces &interfaces)
{
    const WalkRows rows = rowsBelow(walk, ifEntry);
    const WalkRows more = rowsBelow(walk, ifXEntry);
    const WalkRows ofIp = rowsBelow(walk, ifStatsEntry);
    const auto rowOf = [](const WalkRows &all, const Identifier &index) {
        const auto found = all.find(index);
        return found == all.end() ? WalkRow() : found->second;
    };
    for (auto &[ifIndex, interface] : interfaces) {
        OrderedJson counters = OrderedJson::object();
        putGroup(counters, "ipv6", ipCounters(rowOf(ofIp, {IPMIB_IPV6, ifIndex}), ifStatsEntry, tree));
        putGroup(counters, "ipv4", ipCounters(rowOf(ofIp, {IPMIB_IPV4, ifIndex}), ifStatsEntry, tree));
        OrderedJson link = OrderedJson::object();
        putCounters(rowOf(rows, {ifIndex}), rowOf(more, {ifIndex}), ofLinks, link);
        putCounters(rowOf(more, {ifIndex}), rowOf(more, {ifIndex}), ofLinksWide, link);
        putGroup(counters, "link", link);
        putGroup(interface, "counters", counters);
    }
}

void addSystemCounters(const Recording &walk, const ObjectTree &tree, OrderedJson &system)
{
    const WalkRows rows = rowsBelow(walk, systemStatsEntry);
    for (const auto &[version, name] : {std::pair(IPMIB_IPV6, "ipv6"), std::pair(IPMIB_IPV4, "ipv4")}) {
        if (const auto row = rows.find({version}); row != rows.end()) {
            putGroup(system, name, ipCounters(row->second, systemStatsEntry, tree));
        }
    }
    const WalkRows messages = rowsBelow(walk, icmpMsgStatsEntry);
    for (const auto &[index, row] : rowsBelow(walk, icmpStatsEntry)) {
        OrderedJson icmp = OrderedJson::object();
        putCounters(row, row, ofIcmp, icmp);
        for (const auto &[place, type] : messages) {
            if (place.size() == 2 && place.front() == index.front() && place.back() <= UINT8_MAX) {
                putCounters(type, type, ofIcmpTypes, icmp["types"][std::to_string(place.back())]);
            }
        }
        if (index == Identifier{IPMIB_IPV4} || index == Identifier{IPMIB_IPV6}) {
            putGroup(system, index.front() == IPMIB_IPV4 ? "ipv4Icmp" : "icmp", icmp);
        }
    }
    const WalkRow tcp = scalarsBelow(walk, tcpGroup);
    OrderedJson counters = OrderedJson::object();
    putCounters(tcp, tcp, ofTcp, counters);
    putGroup(system, "tcp", counters);
    if (const auto established = tcp.number(9); established && !counters.empty()) {
        system["tcpConnections"] = *established;
    }
    const WalkRow udp = scalarsBelow(walk, udpGroup);
    counters = OrderedJson::object();
    putCounters(udp, udp, ofUdp, counters);
    putGroup(system, "udp", counters);
}

} // namespace ipmib::cli
