// SPDX-License-Identifier: BSD-3-Clause
// What the kernel says of IPv6 on one link at this moment: counters, timers, settings.
#include "links/ip6_link.h"

#include "core/attributes.h"
#include "core/log.h"
#include "core/proc_file.h"
#include "counters/snmp6_text.h"

#include <linux/if_link.h>
#include <linux/ipv6.h>

#include <cerrno>
#include <string>

namespace ipmib::platform
{

namespace
{

std::uint32_t setting(const nlattr *conf, std::size_t which)
{
    std::uint32_t value = 0;
    if (conf != nullptr && mnl_attr_get_payload_len(conf) >= (which + 1) * sizeof value) {
        std::memcpy(&value, static_cast<const char *>(mnl_attr_get_payload(conf)) + which * sizeof value, sizeof value);
    }
    return value;
}

} // namespace

Ip6LinkMessage::Ip6LinkMessage(const nlmsghdr &message)
{
    const Attributes<IFLA_MAX> attributes(message, sizeof(ifinfomsg));
    attributes.copyString(IFLA_IFNAME, name);
    const Attributes<AF_INET6> families(attributes[IFLA_AF_SPEC]);
    if (families[AF_INET6] == nullptr) {
        return;
    }
    link.present = true;
    const Attributes<IFLA_INET6_MAX> inet6(families[AF_INET6]);
    elementCount = inet6.copyBytes(IFLA_INET6_STATS, elements.data(), sizeof elements) / sizeof elements[0];
    if (const auto timers = inet6.get<ifla_cacheinfo>(IFLA_INET6_CACHEINFO)) {
        link.reachableMs = timers->reachable_time;
        link.retransmitMs = timers->retrans_time;
    }
    link.mtu = setting(inet6[IFLA_INET6_CONF], DEVCONF_MTU6);
    inet6.copyBytes(IFLA_INET6_TOKEN, link.token.data(), link.token.size());
}

std::optional<Ip6LinkMessage> Ip6LinkReader::ask(std::uint32_t ifIndex)
{
    RtnetlinkRequest request(RTM_GETLINK, 0);
    request.family<ifinfomsg>().ifi_index = static_cast<int>(ifIndex);
    std::optional<Ip6LinkMessage> answer;
    ++kernelReads_;
    const int error = socket_.ask(request, [&](const nlmsghdr &message) { answer.emplace(message); });
    if (error != 0 && error != ENODEV) {
        logWarning("netlink: interface %u: %s", ifIndex, socket_.error().c_str());
    }
    return answer;
}

std::optional<Ip6Counters> Ip6LinkReader::countersOf(const Ip6LinkMessage &message, std::uint32_t ifIndex)
{
    std::optional<Ip6LinkMessage> later;
    const auto named = [&]() -> std::optional<Ip6Counters> {
        char text[8192];
        const std::string path = std::string("/proc/thread-self/net/dev_snmp6/") + message.name;
        const std::string_view content = ProcFile(path.c_str()).read(text, sizeof text);
        if (content.empty()) {
            return std::nullopt;
        }
        Snmp6Counters counters;
        parseSnmp6(content, counters);
        return counters.ip6;
    };
    const auto again = [&]() -> std::optional<CounterLayout::Array> {
        later = ask(ifIndex);
        return later ? std::optional(later->array()) : std::nullopt;
    };
    return layout_.decode(message.array(), {named, again});
}

const Ip6Link *Ip6LinkReader::read(std::uint32_t ifIndex)
{
    const auto known = read_.find(ifIndex);
    if (known != read_.end() && known->second.packet == packet_) {
        return &known->second.link;
    }
    auto answer = ask(ifIndex);
    if (!answer && known == read_.end()) {
        return nullptr;
    }
    Entry &entry = read_[ifIndex];
    entry.packet = packet_;
    if (answer) {
        const Ip6Counters before = entry.link.counters;
        entry.link = answer->link;
        if (answer->link.present) {
            entry.link.counters = countersOf(*answer, ifIndex).value_or(before);
        }
    }
    return &entry.link;
}

} // namespace ipmib::platform
