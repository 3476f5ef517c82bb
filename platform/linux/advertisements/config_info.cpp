// SPDX-License-Identifier: BSD-3-Clause
// The neighbour discovery settings of one interface: the kernel's timers, and what radvd advertises.
#include "advertisements/config_info.h"

namespace ipmib::platform
{
namespace
{

constexpr std::uint32_t standardMaxIntervalS = 600; // RFC 4861, 6.2.1
constexpr std::uint32_t standardMinIntervalS = 198; // 0.33 of it

std::uint32_t flagIf(bool condition, std::uint32_t flag)
{
    return condition ? flag : 0;
}

bool isAdvertising(const Link &link, const RadvdInterface &radvd)
{
    return radvd.sendAdverts && radvd.refusal.empty() && radvd.linkMtu <= link.mtu;
}

void addAdvertised(const Link &link, const RadvdInterface &radvd, NdIfConfigInfo &info)
{
    info.max_interval_s = static_cast<std::uint32_t>(radvd.maxIntervalMs / 1'000);
    info.min_interval_s = static_cast<std::uint32_t>(radvd.minIntervalMs / 1'000);
    info.default_lifetime_s = radvd.defaultLifetimeS;
    // A router uses the timers that it advertises, and radvd sets the kernel's to them: the advertised value is exact,
    // while the kernel rounds to its clock.
    if (radvd.reachableMs != 0) {
        info.reachable_ms = radvd.reachableMs;
    }
    if (radvd.retransmitMs != 0) {
        info.retransmit_ms = radvd.retransmitMs;
    }
    info.flags = ND_FLAG_LIFETIME_VALID | flagIf(isAdvertising(link, radvd), ND_FLAG_SEND_ADVERTS) |
                 flagIf(radvd.managed, ND_FLAG_MANAGED) | flagIf(radvd.otherConfig, ND_FLAG_OTHER_CONFIG) |
                 flagIf(radvd.reachableMs != 0, ND_FLAG_REACHABLE_VALID) |
                 flagIf(radvd.retransmitMs != 0, ND_FLAG_RETRANSMIT_VALID) |
                 flagIf(radvd.linkMtu == 0, ND_FLAG_NO_MTU_OPTION) | flagIf(radvd.hopLimit == 0, ND_FLAG_NO_HOP_LIMIT);
}

} // namespace

NdIfConfigInfo configInfo(const Link &link, const Ip6Link &ip6, const RadvdInterface *radvd)
{
    NdIfConfigInfo info{};
    info.retransmit_ms = ip6.retransmitMs;
    info.reachable_ms = ip6.reachableMs;
    if (radvd != nullptr) {
        addAdvertised(link, *radvd, info);
    } else {
        info.max_interval_s = standardMaxIntervalS;
        info.min_interval_s = standardMinIntervalS;
        info.flags = ND_FLAG_NO_MTU_OPTION;
    }
    return info;
}

} // namespace ipmib::platform
