// SPDX-License-Identifier: BSD-3-Clause
// Which services there are, what they need, and which of them fail at what time.
#include "device/failures.h"

#include <ipmib/message.h>

#include <array>

namespace ipmib::simulated
{
namespace
{

enum Subject : bool { system, interface };

constexpr std::array<ServiceInfo, static_cast<std::size_t>(Service::count)> services = {{
#define IPMIB_SERVICE(name, part, subject, failure) {#name, ServiceInfo::Part::part, Subject::subject, failure},
#include <ipmib/services.def>
#undef IPMIB_SERVICE
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
