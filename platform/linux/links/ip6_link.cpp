// SPDX-License-Identifier: BSD-3-Clause
// What the kernel says of IPv6 on one link at this moment: counters, timers, settings.
#include "links/ip6_link.h"

#include "core/attributes.h"
#include "core/log.h"
#include "core/proc_file.h"
#include "counters/snmp6_text.h"

#include <linux/if_link.h>
#include <linux/ipv6.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <string>
#include <utility>

namespace ipmib::platform
{
namespace
{

// So many links cost in a dump what one costs by itself: the kernel's way to a link is most of the latter.
constexpr unsigned linksForOne = 5;
// So many are passed over at one go, at most, to come to one that is wanted.
constexpr unsigned mostCredit = 256;

std::uint32_t setting(const nlattr *conf, std::size_t which)
{
    std::uint32_t value = 0;
    if (conf != nullptr && mnl_attr_get_payload_len(conf) >= (which + 1) * sizeof value) {
        std::memcpy(&value, static_cast<const char *>(mnl_attr_get_payload(conf)) + which * sizeof value, sizeof value);
    }
    return value;
}

constexpr std::uint8_t universal = 0x02; // the bit that says "globally unique", inverted in an identifier

InterfaceIdentifier lowerHalf(const std::uint8_t *address)
{
    InterfaceIdentifier identifier;
    std::copy(address + 8, address + 16, identifier.begin());
    return identifier;
}

InterfaceIdentifier fromLinkLayer(const Link &link)
{
    const std::uint8_t *a = link.address;
    const bool zero = std::all_of(a, a + link.addressSize, [](std::uint8_t byte) { return byte == 0; });
    if (zero || (link.addressSize != 6 && link.addressSize != 8)) {
        return {};
    }
    InterfaceIdentifier identifier{a[0], a[1], a[2], 0xFF, 0xFE, a[3], a[4], a[5]};
    if (link.addressSize == 8) {
        std::copy(a, a + 8, identifier.begin());
    }
    identifier[0] ^= universal;
    return identifier;
}

} // namespace

Ip6LinkMessage::Ip6LinkMessage(const nlmsghdr &message)
{
    if (message.nlmsg_len < mnl_nlmsg_size(sizeof(ifinfomsg))) {
        return;
    }
    const auto &info = *static_cast<const ifinfomsg *>(mnl_nlmsg_get_payload(&message));
    const Attributes<IFLA_MAX> attributes(message, sizeof(ifinfomsg));
    ifIndex = static_cast<std::uint32_t>(info.ifi_index);
    attributes.copyString(IFLA_IFNAME, name);
    const nlattr *nest = info.ifi_family == AF_INET6 ? attributes[IFLA_PROTINFO]
                                                     : Attributes<AF_INET6>(attributes[IFLA_AF_SPEC])[AF_INET6];
    if (nest == nullptr) {
        return;
    }
    link.present = true;
    const Attributes<IFLA_INET6_MAX> inet6(nest);
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

void Ip6LinkReader::newPacket()
{
    readings_.newPacket();
    wantedBefore_ = std::exchange(wanted_, 0);
    readFrom_ = std::numeric_limits<std::uint32_t>::max();
}

// For a walk, unless the link is among those that the packet before had read last, or has no IPv6.
bool Ip6LinkReader::paysToReadOn(std::uint32_t ifIndex) const
{
    const bool isWalk = wanted_ >= 2 || wantedBefore_ >= 2;
    const bool isKnown = readings_.isFresh(ifIndex) || (ifIndex >= readFrom_ && ifIndex <= dump_.reached());
    return isWalk && !isKnown && layout_.settled() && dump_.isUsable() && !dump_.isAt(ifIndex);
}

// Each link that is wanted pays for reading the dump on by so many, so that at worst, when it never comes to those that
// are, all costs twice as much. A dump that has passed the link is read to its end, where the next one begins.
void Ip6LinkReader::readOnTo(std::uint32_t ifIndex)
{
    const auto none = [] { return std::nullopt; }; // the order of counters is known
    bool passed = dump_.reached() >= ifIndex;
    if (!passed) {
        readFrom_ = std::min(readFrom_, ifIndex);
    }
    const auto handOn = [&](const nlmsghdr &message) {
        credit_ -= std::min(credit_, 1U);
        if (passed && !dump_.isAtFirst()) {
            return;
        }
        const Ip6LinkMessage answer(message);
        if (answer.ifIndex < ifIndex || !answer.link.present || readings_.isFresh(answer.ifIndex)) {
            return; // one read is what the packet has seen
        }
        if (const auto counters = layout_.decode(answer.array(), {none, none})) {
            Ip6Link link = answer.link;
            link.counters = *counters;
            readings_.put(answer.ifIndex, link);
        }
    };
    while (credit_ > 0 && dump_.readOn(handOn)) {
        ++kernelReads_;
        if (passed && dump_.isAtFirst()) {
            passed = false;
            readFrom_ = ifIndex;
        }
        if (!passed && dump_.reached() >= ifIndex) {
            return;
        }
    }
}

const Ip6Link *Ip6LinkReader::read(std::uint32_t ifIndex)
{
    if (!readings_.isAsked(ifIndex)) {
        ++wanted_;
        credit_ = std::min(credit_ + linksForOne, mostCredit);
    }
    if (paysToReadOn(ifIndex)) {
        readOnTo(ifIndex);
    }
    return readings_.get(ifIndex, [&](Ip6Link &link) {
        const auto answer = ask(ifIndex);
        if (answer) {
            take(*answer, ifIndex, link);
        }
        return answer.has_value();
    });
}

void Ip6LinkReader::take(const Ip6LinkMessage &answer, std::uint32_t ifIndex, Ip6Link &link)
{
    const Ip6Counters before = link.counters;
    link = answer.link;
    if (answer.link.present) {
        link.counters = countersOf(answer, ifIndex).value_or(before);
    }
}

InterfaceIdentifier interfaceIdentifier(const Link &link, const Ip6Link &ip6, const std::uint8_t *linkLocal)
{
    const InterfaceIdentifier token = lowerHalf(ip6.token.data());
    if (token != InterfaceIdentifier{}) {
        return token;
    }
    return linkLocal != nullptr ? lowerHalf(linkLocal) : fromLinkLayer(link);
}

} // namespace ipmib::platform
