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
// descriptor(), dispatch(), beginPacket(), reload() and interfaceName(std::uint32_t ifIndex), and beside it a function
// setRunning(Platform *) that puts it to its services, or takes it away again with null.
template <class Platform>
class Hooks
{
  public:
    static constexpr IpmibPlatformHooks record()
    {
        return {IPMIB_PLATFORM_HOOKS_VERSION, start, stop, descriptor, dispatch, beginPacket, reload, interfaceName};
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

    static inline std::unique_ptr<Platform> instance_;
};

} // namespace ipmib::platform
