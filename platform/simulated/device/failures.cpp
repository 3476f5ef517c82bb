// SPDX-License-Identifier: BSD-3-Clause
// Which services there are, what they need, and which of them fail at what time.
#include "device/failures.h"

#include "core/codes.h"

#include <array>

namespace ipmib::simulated
{
namespace
{

using Part = ServiceInfo::Part;
using platform::notFound;

constexpr std::array<ServiceInfo, static_cast<std::size_t>(Service::count)> services = {{
    {"IP6_DaemonCheck", Part::ip6, false, notFound},
    {"IP_DaemonCheck", Part::ip4, false, notFound},
    {"IF_Select_Init", Part::device, false, notFound},
    {"IF_SelectType_Set", Part::device, false, notFound},
    {"IF_SelectTypeSetGroup", Part::device, false, notFound},
    {"IF_SelectCondition_Set", Part::device, false, notFound},
    {"IF_IteratorInitialize", Part::device, false, 0},
    {"IF_IteratorFinalize", Part::device, false, notFound},
    {"IF_GetFirstIfIndexByIfSelect", Part::device, false, 0},
    {"IF_GetNextIfIndexByIfSelect", Part::device, true, 0},
    {"IF_IsValidIfIndex", Part::device, true, 0},
    {"IP6_GetMibStat", Part::ip6, false, notFound},
    {"IP6_GetIfStat", Part::ip6, true, notFound},
    {"IP_GetMibIfStat", Part::ip4, true, notFound},
    {"ICMP6_GetMibStat", Part::ip6, false, notFound},
    {"ND_GetHopLimit", Part::device, false, 0},
    {"ND_GetIfConfigInfo", Part::ip6, true, notFound},
    {"IP6Mib_GetIFID", Part::ip6, true, notFound},
    {"IP6ADDR_DRVK_GetMainLLA", Part::ip6, true, notFound},
    {"IP6_GetIfMTU", Part::ip6, true, notFound},
    {"ND_GetNetToPhysicalTable", Part::ip6, true, notFound},
    {"ND_GetNextNetToPhysicalTable", Part::ip6, true, notFound},
    {"IP6CFG_GetFirstFullPrefix", Part::ip6, true, notFound},
    {"IP6CFG_GetNextFullPrefix", Part::ip6, true, notFound},
    {"IP6Addr_GetLinkLocalAddr", Part::ip6, true, notFound},
    {"IP6Mib_GetFirstAddrInVrf", Part::ip6, false, notFound},
    {"IP6Mib_GetNextAddrInVrf", Part::ip6, false, notFound},
    {"IP6Mib_GetAddrFullInfoInVrf", Part::ip6, false, notFound},
    {"IP6Mib_GetLinkLocalFullAddr", Part::ip6, true, notFound},
    {"IP6Mib_GetFirstGatewayInVrf", Part::ip6, false, notFound},
    {"IP6Mib_GetNextGatewayInVrf", Part::ip6, true, notFound},
    {"IP6Mib_GetGatewayByKey", Part::ip6, true, notFound},
    {"IP6ADDR_DRVK_GetGatewayByKey", Part::ip6, true, notFound},
    {"TIME_GetSystemBootTime", Part::device, false, notFound},
}};

} // namespace

const ServiceInfo &infoOf(Service service)
{
    return services[static_cast<std::size_t>(service)];
}

std::optional<Service> serviceNamed(const std::string &name)
{
    for (std::size_t i = 0; i < services.size(); ++i) {
        if (services[i].name == name) {
            return static_cast<Service>(i);
        }
    }
    return std::nullopt;
}

std::optional<std::uint32_t> Failures::findAmong(Service service, std::uint32_t ifIndex, Time time) const
{
    for (const Failure &failure : failures_) {
        if (failure.service == service && (failure.ifIndex == 0 || failure.ifIndex == ifIndex) &&
            failure.schedule.covers(time)) {
            return failure.result;
        }
    }
    return std::nullopt;
}

} // namespace ipmib::simulated
