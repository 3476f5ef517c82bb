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
// whether there was something to fill in; what the IPv4 tables need: followIpv4(), which answers as start does, and
// ipv4(), an object with findAddress, addressAfter, findNeighbour and neighbourAfter, which answer likewise; and beside
// it a function setRunning(Platform *) that puts it to its services, or takes it away again with null.
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
                &interfaces,
                &ipv4};
    }

  private:
    static int start(const IpmibPlatformHost *host, char *error, std::size_t capacity)
    {
        setLogSink(host->log);
        instance_ = std::make_unique<Platform>();
        const std::string failure = instance_->start(*host);
        if (!failure.empty()) {
            stop();
            return fail(failure, error, capacity);
        }
        setRunning(instance_.get());
        return 0;
    }

    static int fail(const std::string &failure, char *error, std::size_t capacity)
    {
        std::snprintf(error, capacity, "%s", failure.c_str());
        return -1;
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

    static int followIpv4(char *error, std::size_t capacity)
    {
        const std::string failure = instance_ ? instance_->followIpv4() : "the platform has not started";
        return failure.empty() ? 0 : fail(failure, error, capacity);
    }

    static constexpr int noRow = -1;

    static int findIpv4Address(std::uint32_t address, IpmibIpv4Address *row)
    {
        return instance_ && instance_->ipv4().findAddress(address, *row) ? 0 : noRow;
    }

    static int nextIpv4Address(std::uint32_t address, IpmibIpv4Address *row)
    {
        return instance_ && instance_->ipv4().addressAfter(address, *row) ? 0 : noRow;
    }

    static int findIpv4Neighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour *row)
    {
        return instance_ && instance_->ipv4().findNeighbour(ifIndex, address, *row) ? 0 : noRow;
    }

    static int nextIpv4Neighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour *row)
    {
        return instance_ && instance_->ipv4().neighbourAfter(ifIndex, address, *row) ? 0 : noRow;
    }

    static constexpr IpmibIpv4Hooks ipv4 = {followIpv4, findIpv4Address, nextIpv4Address, findIpv4Neighbour,
                                            nextIpv4Neighbour};

    static inline std::unique_ptr<Platform> instance_;
};

} // namespace ipmib::platform
