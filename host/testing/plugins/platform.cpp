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

#ifdef WITH_INSTANCES
// An instance is the answer of its service; the argument of the first one has the length that `start` has seen.
std::uint32_t answers[10];

int create(const char *argument, IpmibInstance **instance, char *error, size_t capacity)
{
    if (std::strcmp(argument, "broken") == 0) {
        std::snprintf(error, capacity, "the argument \"%s\" is of no use", argument);
        return -1;
    }
    std::uint32_t *free = answers;
    for (; *free != 0; ++free) {
    }
    *free = static_cast<std::uint32_t>(std::strlen(argument));
    *instance = reinterpret_cast<IpmibInstance *>(free);
    return 0;
}
void select(IpmibInstance *instance)
{
    answer = instance == nullptr ? static_cast<std::uint32_t>(std::strlen(host->argument))
                                 : *reinterpret_cast<std::uint32_t *>(instance);
}
void destroy(IpmibInstance *instance)
{
    *reinterpret_cast<std::uint32_t *>(instance) = 0;
    host->log(IPMIB_LOG_INFO, "destroyed");
}
int context(size_t place, IpmibContext *found)
{
    static const IpmibContext contexts[] = {{"red", "xx"}, {"blue", "xxx"}};
    if (place >= 2) {
        return -1;
    }
    *found = contexts[place];
    return 0;
}
const IpmibInstanceHooks instances = {
    sizeof(IpmibInstanceHooks), create, destroy, select, context, nullptr, nullptr, nullptr};
#endif

} // namespace

extern "C" __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks;
const IpmibPlatformHooks ipmib_platform_hooks = [] {
    IpmibPlatformHooks hooks{};
    hooks.size = SIZE;
    hooks.start = start;
    hooks.stop = stop;
    hooks.uptime_began = uptimeBegan;
#ifdef WITH_INSTANCES
    hooks.instances = &instances;
#endif
    return hooks;
}();
#endif
