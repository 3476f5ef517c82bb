// SPDX-License-Identifier: BSD-3-Clause
// What several groups of rules ask.
#include "rules.h"

#include <chrono>
#include <thread>

namespace ipmib::agentcheck
{

const Walk &Check::walked(std::string_view region) const
{
    static const Walk nothing;
    const auto found = walks.find(objects.region(region));
    return found == walks.end() ? nothing : found->second;
}

const Value *Check::value(const Name &name) const
{
    const host::Object *object = objects.objectOf(name);
    if (object == nullptr) {
        return nullptr;
    }
    for (const auto &[region, walk] : walks) {
        if (host::isWithin(name, region->root)) {
            if (const auto found = walk.values.find(name); found != walk.values.end()) {
                return &found->second;
            }
        }
    }
    return nullptr;
}

std::optional<Value> Check::now(const Name &name)
{
    const auto found = exchange.get({name}).front();
    return found && !found->value.isException() ? std::optional(found->value) : std::nullopt;
}

std::optional<std::uint64_t> Check::upTime()
{
    const auto value = now(sysUpTime);
    return value && value->tag == Tag::timeTicks ? std::optional(value->number) : std::nullopt;
}

void reportWhenSure(Check &check, const Name &name, const std::function<std::optional<Fault>()> &look)
{
    constexpr int looks = 3;
    constexpr std::chrono::milliseconds between(20);
    std::optional<Fault> fault = look();
    for (int i = 1; i < looks && fault; ++i) {
        std::this_thread::sleep_for(between);
        const Rule before = fault->rule;
        fault = look();
        if (fault && fault->rule != before) {
            return;
        }
    }
    if (fault) {
        check.report.broken(fault->rule, name, fault->seen);
    }
}

} // namespace ipmib::agentcheck
