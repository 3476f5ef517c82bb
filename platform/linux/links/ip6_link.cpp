// SPDX-License-Identifier: BSD-3-Clause
// What the kernel says of IPv6 on one link at this moment: counters, timers, settings.
#include "links/ip6_link.h"

#include "core/attributes.h"
#include "core/log.h"

#include <algorithm>
#include <cerrno>

namespace ipmib::platform
{

namespace
{

// The attribute's array of 64-bit counters begins with the number of its elements, that one included.
void readCounters(const nlattr *attribute, Ip6Link &link)
{
    if (attribute == nullptr) {
        return;
    }
    const std::size_t sent = mnl_attr_get_payload_len(attribute) / sizeof(std::uint64_t);
    link.counterCount = std::min(sent, link.counters.size());
    std::memcpy(link.counters.data(), mnl_attr_get_payload(attribute), link.counterCount * sizeof(std::uint64_t));
}

std::int32_t setting(const nlattr *conf, std::size_t which)
{
    std::int32_t value = 0;
    if (conf != nullptr && mnl_attr_get_payload_len(conf) >= (which + 1) * sizeof value) {
        std::memcpy(&value, static_cast<const char *>(mnl_attr_get_payload(conf)) + which * sizeof value, sizeof value);
    }
    return value;
}

} // namespace

Ip6Link parseIp6Link(const nlmsghdr &message)
{
    Ip6Link link;
    const Attributes<IFLA_MAX> attributes(message, sizeof(ifinfomsg));
    const Attributes<AF_INET6> families(attributes[IFLA_AF_SPEC]);
    if (families[AF_INET6] == nullptr) {
        return link;
    }
    link.present = true;
    const Attributes<IFLA_INET6_MAX> inet6(families[AF_INET6]);
    readCounters(inet6[IFLA_INET6_STATS], link);
    if (const auto timers = inet6.get<ifla_cacheinfo>(IFLA_INET6_CACHEINFO)) {
        link.reachableMs = timers->reachable_time;
        link.retransmitMs = timers->retrans_time;
    }
    link.mtu = static_cast<std::uint32_t>(setting(inet6[IFLA_INET6_CONF], DEVCONF_MTU6));
    link.disabled = setting(inet6[IFLA_INET6_CONF], DEVCONF_DISABLE_IPV6) != 0;
    inet6.copyBytes(IFLA_INET6_TOKEN, link.token.data(), link.token.size());
    return link;
}

bool Ip6LinkReader::open()
{
    return socket_.open();
}

void Ip6LinkReader::close()
{
    socket_.close();
    read_.clear();
}

const Ip6Link *Ip6LinkReader::read(std::uint32_t ifIndex)
{
    const auto known = read_.find(ifIndex);
    if (known != read_.end() && known->second.packet == packet_) {
        return &known->second.link;
    }
    RtnetlinkRequest request(RTM_GETLINK, 0);
    request.family<ifinfomsg>().ifi_index = static_cast<int>(ifIndex);
    ++kernelReads_;
    Entry *entry = nullptr;
    const int error = socket_.ask(request, [&](const nlmsghdr &message) {
        entry = &read_[ifIndex];
        entry->link = parseIp6Link(message);
    });
    if (entry == nullptr && known != read_.end()) {
        entry = &known->second;
    }
    if (error != 0 && error != ENODEV) {
        logWarning("netlink: interface %u: %s", ifIndex, socket_.error().c_str());
    }
    if (entry == nullptr) {
        return nullptr;
    }
    entry->packet = packet_;
    return &entry->link;
}

} // namespace ipmib::platform
