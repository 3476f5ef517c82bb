// SPDX-License-Identifier: BSD-3-Clause
// A small platform whose one service answers with the length of its argument, and which tells its life in the log.
// Built several times, with and without hooks.
#include <ipmib/platform_hooks.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace
{

[[maybe_unused]] std::uint32_t answer = 99;

} // namespace

extern "C" __attribute__((visibility("default"))) std::uint32_t ipmib_test_service()
{
    return answer;
}

#ifndef WITHOUT_HOOKS
namespace
{

const IpmibPlatformHost *host = nullptr;

int start(const IpmibPlatformHost *lent, char *error, size_t capacity)
{
    host = lent;
    if (std::strcmp(host->argument, "broken") == 0) {
        std::snprintf(error, capacity, "the argument \"%s\" is of no use", host->argument);
        return -1;
    }
    if (std::strcmp(host->argument, "wrong") == 0) {
        std::snprintf(error, capacity, "the argument \"%s\" is wrong", host->argument);
        return IPMIB_WRONG_ARGUMENT;
    }
    answer = static_cast<std::uint32_t>(std::strlen(host->argument));
    for (size_t i = 0; i < host->option_count; ++i) {
        if (std::strcmp(host->options[i].name, "wrong") == 0) {
            std::snprintf(error, capacity, "the option --%s is wrong", host->options[i].name);
            return IPMIB_WRONG_OPTION + static_cast<int>(i);
        }
        host->log(IPMIB_LOG_INFO, host->options[i].name);
        host->log(IPMIB_LOG_INFO, host->options[i].value);
    }
    host->log(IPMIB_LOG_INFO, "started");
    return 0;
}

void stop()
{
    host->log(IPMIB_LOG_INFO, "stopped");
}

#ifndef SIZE
#define SIZE sizeof(IpmibPlatformHooks)
#endif

void uptimeBegan(std::uint64_t) {}

} // namespace

extern "C" __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks;
const IpmibPlatformHooks ipmib_platform_hooks = [] {
    IpmibPlatformHooks hooks{};
    hooks.size = SIZE;
    hooks.start = start;
    hooks.stop = stop;
    hooks.uptime_began = uptimeBegan;
    return hooks;
}();
#endif
