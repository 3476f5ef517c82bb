// SPDX-License-Identifier: BSD-3-Clause
// What every service begins with: whether it can be answered now.
#include "services/call.h"

namespace ipmib::simulated
{
namespace
{

bool isDown(const Device &device, ServiceInfo::Part part)
{
    switch (part) {
    case ServiceInfo::Part::ip6:
        return device.ip6Down.covers(device.time());
    case ServiceInfo::Part::ip4:
        return device.ip4Down.covers(device.time());
    case ServiceInfo::Part::device:
        break;
    }
    return false;
}

} // namespace

Call Call::decided(Service service, std::uint32_t ifIndex)
{
    SimulatedPlatform *const platform = running();
    if (platform == nullptr) {
        return {nullptr, infoOf(service).failure};
    }
    const Device &device = platform->device();
    if (const auto failure = device.failures.find(service, ifIndex, device.time())) {
        return {nullptr, *failure};
    }
    return isDown(device, infoOf(service).part) ? Call(nullptr, infoOf(service).failure) : Call(platform, success);
}

} // namespace ipmib::simulated
