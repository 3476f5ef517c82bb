// SPDX-License-Identifier: BSD-3-Clause
// Copies as much of each record as the platform has.

#include "platform_hooks.h"

#include "plugin.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

namespace ipmib::host
{

namespace
{

// Before the record had a size, it had a version in this place, the last of which was 3.
constexpr std::uint32_t lastVersion = 3;
constexpr std::uint32_t sizeOfLastVersion = offsetof(IpmibPlatformHooks, ip);

template <class Record>
void copy(const Record &from, std::uint32_t size, Record &to)
{
    std::memcpy(&to, &from, std::min<std::size_t>(size, sizeof to));
    to.size = static_cast<std::uint32_t>(sizeof to);
}

} // namespace

PlatformHooks::PlatformHooks(const IpmibPlatformHooks &exported)
{
    const std::uint32_t size = exported.size == lastVersion ? sizeOfLastVersion : exported.size;
    if (size < sizeOfLastVersion) {
        throw PluginError("ipmib_platform_hooks has the size or version " + std::to_string(exported.size) +
                          ", which no host can use");
    }
    copy(exported, size, hooks_);
    if (hooks_.ip != nullptr) {
        copy(*hooks_.ip, hooks_.ip->size, ip_);
        hooks_.ip = &ip_;
    }
    if (hooks_.routes != nullptr) {
        copy(*hooks_.routes, hooks_.routes->size, routes_);
        hooks_.routes = &routes_;
    }
    if (hooks_.connections != nullptr) {
        copy(*hooks_.connections, hooks_.connections->size, connections_);
        hooks_.connections = &connections_;
    }
    if (hooks_.instances != nullptr) {
        copy(*hooks_.instances, hooks_.instances->size, instances_);
        hooks_.instances = &instances_;
    }
    if (hooks_.recorded != nullptr) {
        copy(*hooks_.recorded, hooks_.recorded->size, recorded_);
        hooks_.recorded = &recorded_;
    }
    if (hooks_.rehearsal != nullptr) {
        copy(*hooks_.rehearsal, hooks_.rehearsal->size, rehearsal_);
        hooks_.rehearsal = &rehearsal_;
    }
}

} // namespace ipmib::host
