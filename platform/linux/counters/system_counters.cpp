// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 and ICMPv6 counters of this network namespace, read once for a packet of requests.
#include "counters/system_counters.h"

#include <algorithm>
#include <charconv>

namespace ipmib::platform
{

namespace
{

struct Name {
    std::string_view name;
    Ip6Counter counter;
};

// In the kernel's order, so that looking on from the last hit finds the next name at once.
constexpr Name ip6Names[] = {
    {"InReceives", ip6InReceives},
    {"InHdrErrors", ip6InHdrErrors},
    {"InTooBigErrors", ip6InTooBigErrors},
    {"InNoRoutes", ip6InNoRoutes},
    {"InAddrErrors", ip6InAddrErrors},
    {"InUnknownProtos", ip6InUnknownProtos},
    {"InTruncatedPkts", ip6InTruncatedPkts},
    {"InDiscards", ip6InDiscards},
    {"InDelivers", ip6InDelivers},
    {"OutForwDatagrams", ip6OutForwDatagrams},
    {"OutRequests", ip6OutRequests},
    {"OutDiscards", ip6OutDiscards},
    {"OutNoRoutes", ip6OutNoRoutes},
    {"ReasmTimeout", ip6ReasmTimeout},
    {"ReasmReqds", ip6ReasmReqds},
    {"ReasmOKs", ip6ReasmOKs},
    {"ReasmFails", ip6ReasmFails},
    {"FragOKs", ip6FragOKs},
    {"FragFails", ip6FragFails},
    {"FragCreates", ip6FragCreates},
    {"InMcastPkts", ip6InMcastPkts},
    {"OutMcastPkts", ip6OutMcastPkts},
    {"InOctets", ip6InOctets},
    {"OutOctets", ip6OutOctets},
    {"OutTransmits", ip6OutTransmits},
};

bool takePrefix(std::string_view &text, std::string_view prefix)
{
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

std::uint64_t number(std::string_view text)
{
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    std::uint64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

void setIcmp6(std::string_view name, std::uint64_t value, Snmp6 &counters)
{
    const bool in = name.starts_with("InType");
    if (in || name.starts_with("OutType")) {
        const std::uint64_t type = number(name.substr(in ? 6 : 7));
        if (type < 256) {
            (in ? counters.icmp6InType : counters.icmp6OutType)[type] = value;
        }
    } else if (name == "InMsgs") {
        counters.icmp6InMsgs = value;
    } else if (name == "InErrors") {
        counters.icmp6InErrors = value;
    } else if (name == "OutMsgs") {
        counters.icmp6OutMsgs = value;
    }
}

} // namespace

void parseSnmp6(std::string_view text, Snmp6 &counters)
{
    counters = Snmp6{};
    std::size_t next = 0;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        const std::size_t nameEnd = line.find_first_of(" \t");
        if (nameEnd == std::string_view::npos) {
            continue;
        }
        std::string_view name = line.substr(0, nameEnd);
        const std::uint64_t value = number(line.substr(nameEnd));
        if (takePrefix(name, "Ip6")) {
            for (std::size_t tried = 0; tried < std::size(ip6Names); ++tried) {
                const Name &candidate = ip6Names[(next + tried) % std::size(ip6Names)];
                if (candidate.name == name) {
                    counters.ip6[candidate.counter] = value;
                    counters.ip6Known = std::max<std::size_t>(counters.ip6Known, candidate.counter + 1);
                    next += tried + 1;
                    break;
                }
            }
        } else if (takePrefix(name, "Icmp6")) {
            setIcmp6(name, value, counters);
        }
    }
}

void SystemCounters::close()
{
    file_.close();
    fresh_ = false;
}

const Snmp6 *SystemCounters::read()
{
    if (!fresh_) {
        static char text[64 * 1024]; // 512 message types at most, of some 40 characters each
        const std::string_view content = file_.read(text, sizeof text);
        if (content.empty()) {
            return nullptr;
        }
        ++kernelReads_;
        parseSnmp6(content, counters_);
        fresh_ = true;
    }
    return &counters_;
}

} // namespace ipmib::platform
