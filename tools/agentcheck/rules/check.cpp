// SPDX-License-Identifier: BSD-3-Clause
// What several groups of rules ask.
#include "rules.h"

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

bool Check::isNewStart(std::uint64_t upTime) const
{
    using Ticks = std::chrono::duration<std::uint64_t, std::centi>;
    constexpr Ticks margin = std::chrono::seconds(1);
    const auto elapsed = std::chrono::duration_cast<Ticks>(std::chrono::steady_clock::now() - began);
    return upTime < startedAt && Ticks(upTime) <= elapsed + margin;
}

void doubt(Check &check, const Name &name, Look look)
{
    if (auto fault = look()) {
        check.doubts.push_back({name, std::move(look), std::move(*fault)});
    }
}

void reportWhatIsStillWrong(Check &check)
{
    for (int look = 0; look < 2 && !check.doubts.empty(); ++look) {
        std::this_thread::sleep_for(check.settings.settleTime);
        std::erase_if(check.doubts, [](Doubt &doubt) {
            auto fault = doubt.look();
            const bool isGone = !fault || fault->rule != doubt.fault.rule;
            if (!isGone) {
                doubt.fault = std::move(*fault);
            }
            return isGone;
        });
    }
    for (Doubt &doubt : check.doubts) {
        check.report.broken(doubt.fault.rule, doubt.name, std::move(doubt.fault.seen));
    }
    check.doubts.clear();
}

} // namespace ipmib::agentcheck
