// SPDX-License-Identifier: BSD-3-Clause
// The scripted platform as a library: a random device whose seed is the argument.
#include "../device.h"

#include <ipmib/platform_hooks.h>

#include <cstdlib>

namespace
{

int start(const IpmibPlatformHost *host, char *, size_t)
{
    ipmib::host::testing::Random random(static_cast<std::uint32_t>(std::atoi(host->argument)));
    ipmib::host::testing::makeRandomDevice(random);
    return 0;
}

void stop() {}

} // namespace

extern "C" __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks;
const IpmibPlatformHooks ipmib_platform_hooks = [] {
    IpmibPlatformHooks hooks{};
    hooks.size = sizeof(IpmibPlatformHooks);
    hooks.start = start;
    hooks.stop = stop;
    return hooks;
}();
