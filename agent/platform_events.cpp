// SPDX-License-Identifier: BSD-3-Clause
// The library hands back one pointer, which it keeps as a pointer to what may be changed.

#include "platform_events.h"

#include "net_snmp.h"

namespace ipmib::agent
{

PlatformEvents::PlatformEvents(const IpmibPlatformHooks *platform)
{
    if (platform != nullptr && platform->descriptor != nullptr && (descriptor_ = platform->descriptor()) >= 0) {
        register_readfd(
            descriptor_, [](int, void *hooks) { static_cast<const IpmibPlatformHooks *>(hooks)->dispatch(); },
            const_cast<IpmibPlatformHooks *>(platform));
    }
}

PlatformEvents::~PlatformEvents()
{
    if (descriptor_ >= 0) {
        unregister_readfd(descriptor_);
    }
}

} // namespace ipmib::agent
