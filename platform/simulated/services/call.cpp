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

Call::Call(Service service, std::uint32_t ifIndex) : platform_(running()), result_(infoOf(service).failure)
{
    if (platform_ == nullptr) {
        return;
    }
    const Device &device = platform_->device();
    if (const auto failure = device.failures.find(service, ifIndex, device.time())) {
        result_ = *failure;
        platform_ = nullptr;
    } else if (isDown(device, infoOf(service).part)) {
        platform_ = nullptr;
    }
}

} // namespace ipmib::simulated
