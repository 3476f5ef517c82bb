// SPDX-License-Identifier: BSD-3-Clause
// Calls the services as the module does.
#include "probe.h"

#include <algorithm>

namespace ipmib::portcheck
{

std::string callText(const char *service, std::uint32_t number)
{
    return std::string(service) + "(" + std::to_string(number) + ")";
}

std::uint32_t swapped(std::uint32_t number)
{
    return __builtin_bswap32(number);
}

void Probe::beginPacket()
{
    if (hooks_ != nullptr && hooks_->begin_packet != nullptr) {
        doing("the hook begin_packet");
        hooks_->begin_packet();
    }
    interfaces_.clear();
}

std::size_t Probe::brokenCount(Promise promise) const
{
    return static_cast<std::size_t>(std::count_if(report_.broken.begin(), report_.broken.end(),
                                                  [promise](const Finding &one) { return one.promise == promise; }));
}

void Probe::row(const char *kind, const Items &items)
{
    report_.rows.push_back(kind + std::string(" ") + textOf(items));
}

void Probe::expectSteady(const std::string &call, const std::string &who, const std::function<void()> &askOther,
                         const std::function<Items()> &ask)
{
    for (int tries = 0; tries < 3; ++tries) { // what is asked for may be changing
        askOther();
        const Items behindOther = ask();
        const std::string difference = differenceOf(behindOther, ask());
        if (difference.empty()) {
            return;
        }
        if (tries == 2) {
            broken(Promise::steady, call,
                   who + ": asked twice, its " + difference + ": something is left from the row before");
        }
    }
}

bool Probe::isValid(std::uint32_t ifIndex)
{
    doing(callText("IF_IsValidIfIndex", ifIndex));
    return services_.IF_IsValidIfIndex(ifIndex) == 1;
}

bool Probe::isInterface(std::uint32_t ifIndex)
{
    return interfaces_.count(ifIndex) != 0 || (isValid(ifIndex) && !isValid(0));
}

void Probe::know(const std::vector<std::uint32_t> &interfaces)
{
    interfaces_.insert(interfaces.begin(), interfaces.end());
}

bool Probe::linkLocal(std::uint32_t ifIndex, FullAddressRecord &record)
{
    record = {};
    return fill(callText("IP6Mib_GetLinkLocalFullAddr", ifIndex), record,
                [&](FullAddressRecord *filled) { return services_.IP6Mib_GetLinkLocalFullAddr(ifIndex, filled); });
}

bool Probe::hasLinkLocalRow(std::uint32_t ifIndex)
{
    LinkLocalBuffer buffer{};
    return fill(callText("IP6Addr_GetLinkLocalAddr", ifIndex), buffer,
                [&](LinkLocalBuffer *filled) { return services_.IP6Addr_GetLinkLocalAddr(ifIndex, filled); });
}

bool Probe::hasMainLinkLocal(std::uint32_t ifIndex)
{
    FullAddressRecord record{};
    return fill(callText("IP6ADDR_DRVK_GetMainLLA", ifIndex), record,
                [&](FullAddressRecord *filled) { return services_.IP6ADDR_DRVK_GetMainLLA(ifIndex, filled); });
}

bool Probe::configuration(std::uint32_t ifIndex, NdIfConfigInfo &info)
{
    info = {};
    return fill(callText("ND_GetIfConfigInfo", ifIndex), info,
                [&](NdIfConfigInfo *filled) { return services_.ND_GetIfConfigInfo(ifIndex, filled); });
}

bool Probe::identifier(std::uint32_t ifIndex, std::array<std::uint8_t, 8> &identifier)
{
    identifier = {};
    return fill(callText("IP6Mib_GetIFID", ifIndex), identifier,
                [&](std::array<std::uint8_t, 8> *filled) { return services_.IP6Mib_GetIFID(ifIndex, filled->data()); });
}

std::uint32_t Probe::secondsSinceBoot()
{
    struct Time {
        std::uint32_t seconds;
        std::uint32_t other;
    } time{};
    fill("TIME_GetSystemBootTime", time, [&](Time *filled) {
        services_.TIME_GetSystemBootTime(&filled->seconds, &filled->other);
        return 0;
    });
    return time.seconds;
}

} // namespace ipmib::portcheck
