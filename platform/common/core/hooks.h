// SPDX-License-Identifier: BSD-3-Clause
// What a host calls to drive a platform: the hooks over the one platform of the process, from start to stop.
#pragma once

#include "core/log.h"

#include <ipmib/platform_hooks.h>

#include <cstdio>
#include <memory>
#include <string>

namespace ipmib::platform
{

// A platform has start(const IpmibPlatformHost &), which answers with one line for the user when it fails,
// descriptor(), dispatch(), beginPacket(), reload() and interfaceName(std::uint32_t ifIndex); what the interface tables
// need: findInterface, interfaceAfter, traffic, interfaceCount and interfacesChangedMs, the first three of which answer
// whether there was something to fill in; and beside it a function setRunning(Platform *) that puts it to its services,
// or takes it away again with null.
template <class Platform>
class Hooks
{
  public:
    static constexpr IpmibPlatformHooks record()
    {
        return {IPMIB_PLATFORM_HOOKS_VERSION,
                start,
                stop,
                descriptor,
                dispatch,
                beginPacket,
                reload,
                interfaceName,
                &interfaces};
    }

  private:
    static int start(const IpmibPlatformHost *host, char *error, std::size_t capacity)
    {
        setLogSink(host->log);
        instance_ = std::make_unique<Platform>();
        const std::string failure = instance_->start(*host);
        if (!failure.empty()) {
            stop();
            std::snprintf(error, capacity, "%s", failure.c_str());
            return -1;
        }
        setRunning(instance_.get());
        return 0;
    }

    static void stop()
    {
        setRunning(static_cast<Platform *>(nullptr));
        instance_.reset();
        setLogSink(nullptr);
    }

    static int descriptor() { return instance_ ? instance_->descriptor() : -1; }

    static void dispatch()
    {
        if (instance_) {
            instance_->dispatch();
        }
    }

    static void beginPacket()
    {
        if (instance_) {
            instance_->beginPacket();
        }
    }

    static void reload()
    {
        if (instance_) {
            instance_->reload();
        }
    }

    static const char *interfaceName(std::uint32_t ifIndex)
    {
        return instance_ ? instance_->interfaceName(ifIndex) : nullptr;
    }

    static constexpr int noInterface = -1;

    static int findInterface(std::uint32_t ifIndex, IpmibInterface *interface)
    {
        return instance_ && instance_->findInterface(ifIndex, *interface) ? 0 : noInterface;
    }

    static int nextInterface(std::uint32_t ifIndex, IpmibInterface *interface)
    {
        return instance_ && instance_->interfaceAfter(ifIndex, *interface) ? 0 : noInterface;
    }

    static int traffic(std::uint32_t ifIndex, IpmibInterfaceTraffic *traffic)
    {
        return instance_ && instance_->traffic(ifIndex, *traffic) ? 0 : noInterface;
    }

    static std::uint32_t interfaceCount() { return instance_ ? instance_->interfaceCount() : 0; }

    static std::uint64_t interfacesChangedMs() { return instance_ ? instance_->interfacesChangedMs() : 0; }

    static constexpr IpmibInterfaceHooks interfaces = {findInterface, nextInterface, traffic, interfaceCount,
                                                       interfacesChangedMs};

    static inline std::unique_ptr<Platform> instance_;
};

} // namespace ipmib::platform
