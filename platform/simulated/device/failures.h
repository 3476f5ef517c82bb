// SPDX-License-Identifier: BSD-3-Clause
// Which services there are, what they need, and which of them fail at what time.
#pragma once

#include "scenario/schedule.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ipmib::simulated
{

// In the order of ipmib/platform.h.
enum class Service {
    IP6_DaemonCheck,
    IP_DaemonCheck,
    IF_Select_Init,
    IF_SelectType_Set,
    IF_SelectTypeSetGroup,
    IF_SelectCondition_Set,
    IF_IteratorInitialize,
    IF_IteratorFinalize,
    IF_GetFirstIfIndexByIfSelect,
    IF_GetNextIfIndexByIfSelect,
    IF_IsValidIfIndex,
    IP6_GetMibStat,
    IP6_GetIfStat,
    IP_GetMibIfStat,
    ICMP6_GetMibStat,
    ND_GetHopLimit,
    ND_GetIfConfigInfo,
    IP6Mib_GetIFID,
    IP6ADDR_DRVK_GetMainLLA,
    IP6_GetIfMTU,
    ND_GetNetToPhysicalTable,
    ND_GetNextNetToPhysicalTable,
    IP6CFG_GetFirstFullPrefix,
    IP6CFG_GetNextFullPrefix,
    IP6Addr_GetLinkLocalAddr,
    IP6Mib_GetFirstAddrInVrf,
    IP6Mib_GetNextAddrInVrf,
    IP6Mib_GetAddrFullInfoInVrf,
    IP6Mib_GetLinkLocalFullAddr,
    IP6Mib_GetFirstGatewayInVrf,
    IP6Mib_GetNextGatewayInVrf,
    IP6Mib_GetGatewayByKey,
    IP6ADDR_DRVK_GetGatewayByKey,
    TIME_GetSystemBootTime,
    count
};

struct ServiceInfo {
    const char *name;
    enum class Part { device, ip6, ip4 } part; // what must run for it
    bool ofInterface;                          // it is asked about one interface
    std::uint32_t failure;                     // what it answers when it fails
};
const ServiceInfo &infoOf(Service service);
std::optional<Service> serviceNamed(const std::string &name);

struct Failure {
    Service service;
    std::uint32_t ifIndex; // of the interface that it fails for; 0: all
    std::uint32_t result;
    Schedule schedule;
};

class Failures
{
  public:
    bool empty() const { return failures_.empty(); }
    void add(Failure failure) { failures_.push_back(std::move(failure)); }
    // The result of a service that fails now, asked about an interface or (0) about none.
    std::optional<std::uint32_t> find(Service service, std::uint32_t ifIndex, Time time) const
    {
        return failures_.empty() ? std::nullopt : findAmong(service, ifIndex, time);
    }

  private:
    std::optional<std::uint32_t> findAmong(Service service, std::uint32_t ifIndex, Time time) const;

    std::vector<Failure> failures_; // a handful
};

} // namespace ipmib::simulated
