// SPDX-License-Identifier: BSD-3-Clause
// The text in which the kernel tells its counters of IPv4, ICMP, TCP and UDP.
#include "counters/ipv4_counter_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace ipmib::platform
{

namespace
{

using Text = Ipv4CounterText;

struct Name {
    std::string_view group;
    std::string_view name;
    std::uint16_t slot;
};
constexpr Name slotNames[] = {
    {"Ip", "InReceives", IPMIB_IP_IN_RECEIVES},
    {"Ip", "InHdrErrors", IPMIB_IP_IN_HDR_ERRORS},
    {"Ip", "InAddrErrors", IPMIB_IP_IN_ADDR_ERRORS},
    {"Ip", "ForwDatagrams", IPMIB_IP_OUT_FORW_DATAGRAMS},
    {"Ip", "InUnknownProtos", IPMIB_IP_IN_UNKNOWN_PROTOS},
    {"Ip", "InDiscards", IPMIB_IP_IN_DISCARDS},
    {"Ip", "InDelivers", IPMIB_IP_IN_DELIVERS},
    {"Ip", "OutRequests", IPMIB_IP_OUT_REQUESTS},
    {"Ip", "OutDiscards", IPMIB_IP_OUT_DISCARDS},
    {"Ip", "OutNoRoutes", IPMIB_IP_OUT_NO_ROUTES},
    {"Ip", "ReasmReqds", IPMIB_IP_REASM_REQDS},
    {"Ip", "ReasmOKs", IPMIB_IP_REASM_OKS},
    {"Ip", "ReasmFails", IPMIB_IP_REASM_FAILS},
    {"Ip", "FragOKs", IPMIB_IP_OUT_FRAG_OKS},
    {"Ip", "FragFails", IPMIB_IP_OUT_FRAG_FAILS},
    {"Ip", "FragCreates", IPMIB_IP_OUT_FRAG_CREATES},
    {"Ip", "OutTransmits", IPMIB_IP_OUT_TRANSMITS}, // since Linux 6.7
    {"IpExt", "InNoRoutes", IPMIB_IP_IN_NO_ROUTES},
    {"IpExt", "InTruncatedPkts", IPMIB_IP_IN_TRUNCATED_PKTS},
    {"IpExt", "InMcastPkts", IPMIB_IP_IN_MCAST_PKTS},
    {"IpExt", "OutMcastPkts", IPMIB_IP_OUT_MCAST_PKTS},
    {"IpExt", "InBcastPkts", IPMIB_IP_IN_BCAST_PKTS},
    {"IpExt", "OutBcastPkts", IPMIB_IP_OUT_BCAST_PKTS},
    {"IpExt", "InOctets", IPMIB_IP_IN_OCTETS},
    {"IpExt", "OutOctets", IPMIB_IP_OUT_OCTETS},
    {"IpExt", "InMcastOctets", IPMIB_IP_IN_MCAST_OCTETS},
    {"IpExt", "OutMcastOctets", IPMIB_IP_OUT_MCAST_OCTETS},
    {"Icmp", "InMsgs", Text::icmpInMsgs},
    {"Icmp", "InErrors", Text::icmpInErrors},
    {"Icmp", "OutMsgs", Text::icmpOutMsgs},
    {"Icmp", "OutErrors", Text::icmpOutErrors},
    {"Tcp", "RtoAlgorithm", Text::tcpRtoAlgorithm},
    {"Tcp", "RtoMin", Text::tcpRtoMin},
    {"Tcp", "RtoMax", Text::tcpRtoMax},
    {"Tcp", "MaxConn", Text::tcpMaxConn},
    {"Tcp", "ActiveOpens", Text::tcpActiveOpens},
    {"Tcp", "PassiveOpens", Text::tcpPassiveOpens},
    {"Tcp", "AttemptFails", Text::tcpAttemptFails},
    {"Tcp", "EstabResets", Text::tcpEstabResets},
    {"Tcp", "CurrEstab", Text::tcpCurrEstab},
    {"Tcp", "InSegs", Text::tcpInSegs},
    {"Tcp", "OutSegs", Text::tcpOutSegs},
    {"Tcp", "RetransSegs", Text::tcpRetransSegs},
    {"Tcp", "InErrs", Text::tcpInErrs},
    {"Tcp", "OutRsts", Text::tcpOutRsts},
    {"Udp", "InDatagrams", Text::udpInDatagrams},
    {"Udp", "NoPorts", Text::udpNoPorts},
    {"Udp", "InErrors", Text::udpInErrors},
    {"Udp", "OutDatagrams", Text::udpOutDatagrams},
};

// The text up to the separator, which is taken off as well.
std::string_view takeUpTo(std::string_view &text, char separator)
{
    const std::string_view word = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(word.size() + 1, text.size()));
    return word;
}

// "InType3" and the like: of the messages by type the kernel names only those that it has seen.
std::uint16_t slotOfType(std::string_view name, std::string_view prefix, std::uint16_t first)
{
    if (!name.starts_with(prefix)) {
        return Text::slots;
    }
    std::uint8_t type = 0;
    const char *end = name.data() + name.size();
    const auto [stop, error] = std::from_chars(name.data() + prefix.size(), end, type);
    return static_cast<std::uint16_t>(error == std::errc() && stop == end ? first + type : +Text::slots);
}

std::uint16_t slotOf(std::string_view group, std::string_view name)
{
    if (group == "IcmpMsg") {
        return std::min(slotOfType(name, "InType", Text::icmpInType), slotOfType(name, "OutType", Text::icmpOutType));
    }
    const auto *found = std::find_if(std::begin(slotNames), std::end(slotNames),
                                     [&](const Name &known) { return known.group == group && known.name == name; });
    return found == std::end(slotNames) ? std::uint16_t{Text::slots} : found->slot;
}

std::optional<std::uint64_t> number(std::string_view text)
{
    const char *end = text.data() + text.size();
    if (text.starts_with('-')) {
        std::int64_t value = 0;
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        return error == std::errc() && stop == end ? std::optional(static_cast<std::uint64_t>(value)) : std::nullopt;
    }
    std::uint64_t value = 0;
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

} // namespace

void Ipv4CounterText::readNames(std::string_view line, Group &group)
{
    group.names = line;
    group.columns.clear();
    group.wanted = false;
    const std::string_view name = takeUpTo(line, ':');
    takeUpTo(line, ' ');
    while (!line.empty()) {
        group.columns.push_back(slotOf(name, takeUpTo(line, ' ')));
        group.wanted = group.wanted || group.columns.back() != slots;
    }
}

void Ipv4CounterText::parse(std::string_view text, Values &values)
{
    values.there.fill(false);
    values.value.fill(0);
    for (std::size_t at = 0; !text.empty(); ++at) {
        const std::string_view header = takeUpTo(text, '\n');
        std::string_view numbers = takeUpTo(text, '\n');
        if (at == groups_.size()) {
            groups_.emplace_back();
        }
        Group &group = groups_[at];
        if (group.names != header) {
            readNames(header, group);
        }
        if (!group.wanted || takeUpTo(numbers, ':') != header.substr(0, header.find(':'))) {
            continue;
        }
        takeUpTo(numbers, ' ');
        for (std::size_t i = 0; i < group.columns.size() && !numbers.empty(); ++i) {
            const std::string_view word = takeUpTo(numbers, ' ');
            const std::uint16_t slot = group.columns[i];
            if (const auto value = slot != slots ? number(word) : std::nullopt) {
                values.value[slot] = *value;
                values.there[slot] = true;
            }
        }
    }
}

} // namespace ipmib::platform
