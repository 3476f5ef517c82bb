// SPDX-License-Identifier: BSD-3-Clause
// sysUpTime, and times that something happened at, which are values of it.
#include "rules.h"

namespace ipmib::agentcheck
{
namespace
{

const Name snmpEngineTime{1, 3, 6, 1, 6, 3, 10, 2, 1, 3, 0}; // seconds
constexpr std::uint64_t ticksPerSecond = 100;

// After 497 days sysUpTime begins again at 0, and what happened before may be ahead of it.
bool hasUpTimeWrapped(Check &check)
{
    const auto engineTime = check.now(snmpEngineTime);
    return engineTime && engineTime->number >= UINT32_MAX / ticksPerSecond;
}

void checkUpTime(Check &check)
{
    const auto upTime = check.upTime();
    if (upTime && *upTime < check.startedAt && !check.isNewStart(*upTime)) {
        check.report.broken(Rule::upTime, sysUpTime,
                            "was " + std::to_string(check.startedAt) + ", is " + std::to_string(*upTime));
    }
}

} // namespace

void checkTimes(Check &check)
{
    checkUpTime(check);
    if (hasUpTimeWrapped(check)) {
        check.report.fact("sysUpTime has wrapped: times were not compared with it");
        return;
    }
    for (const auto &[region, walk] : check.walks) {
        for (const auto &[name, value] : walk.values) {
            if (value.tag != Tag::timeTicks) {
                continue;
            }
            doubt(check, name, [name = name, &check]() -> std::optional<Fault> {
                const auto found = check.exchange.get({name, sysUpTime});
                // One of two that are asked at once may be of the time that the packet came at.
                if (!found[0] || !found[1] || found[0]->value.tag != Tag::timeTicks ||
                    found[1]->value.tag != Tag::timeTicks ||
                    found[0]->value.number <= found[1]->value.number + ticksPerSecond) {
                    return std::nullopt;
                }
                return Fault{Rule::timeAhead,
                             "is " + textOf(found[0]->value) + ", and sysUpTime is " + textOf(found[1]->value)};
            });
        }
    }
}

} // namespace ipmib::agentcheck
