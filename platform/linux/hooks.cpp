// SPDX-License-Identifier: BSD-3-Clause
// What the host calls to drive the platform.
#include "core/log.h"
#include "platform.h"

#include <cstdio>
#include <memory>

namespace
{

using namespace ipmib::platform;

std::unique_ptr<Platform> instance;

void stop()
{
    setRunning(nullptr);
    instance.reset();
    setLogSink(nullptr);
}

int start(const IpmibPlatformHost *host, char *error, size_t capacity)
{
    setLogSink(host->log);
    Settings settings;
    std::string failure = readOptions(*host, settings);
    if (failure.empty()) {
        instance = std::make_unique<Platform>();
        failure = instance->start(settings);
    }
    if (!failure.empty()) {
        stop();
        std::snprintf(error, capacity, "%s", failure.c_str());
        return -1;
    }
    setRunning(instance.get());
    return 0;
}

int descriptor()
{
    return instance ? instance->descriptor() : -1;
}

void dispatch()
{
    if (instance) {
        instance->dispatch();
    }
}

void beginPacket()
{
    if (instance) {
        instance->beginPacket();
    }
}

void reload()
{
    if (instance) {
        instance->reload();
    }
}

} // namespace

extern "C" __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks = {
    IPMIB_PLATFORM_HOOKS_VERSION, start, stop, descriptor, dispatch, beginPacket, reload,
};
