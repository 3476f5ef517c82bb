// SPDX-License-Identifier: BSD-3-Clause
// Counters: the two sizes of one, and that they do not fall.
#include "rules.h"

#include <algorithm>

namespace ipmib::agentcheck
{
namespace
{

// Of a 64-bit counter, the one of 32 bits: ifHCInOctets has ifInOctets. Null when there is none.
const host::Object *lowerHalf(const Objects &objects, const host::Object &wide)
{
    std::string name = wide.node->pszName;
    const std::size_t place = name.find("HC");
    return place == std::string::npos ? nullptr : objects.find(name.erase(place, 2));
}

// And the other way round.
const host::Object *wideOne(const Objects &objects, const host::Object &low)
{
    for (const Region &region : objects.regions()) {
        for (const host::Object *object : region.objects) {
            if (tagOf(*object->node) == Tag::counter64 && lowerHalf(objects, *object) == &low) {
                return object;
            }
        }
    }
    return nullptr;
}

void checkHalves(Check &check, const host::Object &wide, const Name &name)
{
    const host::Object *low = lowerHalf(check.objects, wide);
    if (low == nullptr) {
        return;
    }
    const Name half = extended(nameOf(*low), instanceOf(name, wide));
    reportWhenSure(check, half, [&]() -> std::optional<Fault> {
        // The wide one is between two of the other, all in one packet.
        const auto found = check.exchange.get({half, name, half});
        if (!std::ranges::all_of(found, [](const auto &one) { return one && isCounter(one->value.tag); })) {
            return std::nullopt;
        }
        const auto first = static_cast<std::uint32_t>(found[0]->value.number);
        const auto between = static_cast<std::uint32_t>(found[1]->value.number) - first;
        const auto last = static_cast<std::uint32_t>(found[2]->value.number) - first;
        if (between <= last) {
            return std::nullopt;
        }
        return Fault{Rule::lowHalf, "is " + textOf(found[0]->value) + ", and " + check.objects.text(name) + " is " +
                                        textOf(found[1]->value)};
    });
}

// The time of the last discontinuity of the counters of a row; empty when there is none.
Name discontinuityOf(const Objects &objects, const Region &region, const host::Object &object, const Name &name)
{
    constexpr std::string_view table = "Table";
    const bool isOfInterface = region.name == "ifTable" || region.name == "ifXTable";
    const std::string stem = region.name.substr(0, region.name.size() - std::min(region.name.size(), table.size()));
    const host::Object *time = objects.find(isOfInterface ? "ifCounterDiscontinuityTime" : stem + "DiscontinuityTime");
    return time == nullptr ? Name() : extended(nameOf(*time), instanceOf(name, object));
}

bool isFallen(const Value &before, const Value &after, bool hasWide)
{
    if (before.tag != after.tag) {
        return false;
    }
    if (before.tag == Tag::counter64) {
        return after.number < before.number;
    }
    // What is less may have wrapped; where it may do so between two looks, there is one of 64 bits.
    return !hasWide && static_cast<std::uint32_t>(after.number - before.number) > UINT32_MAX / 2;
}

void checkFalls(Check &check, const Region &region, const Walk &walk)
{
    constexpr std::size_t atOnce = 12;
    std::vector<Name> names;
    for (const auto &[name, value] : walk.values) {
        if (isCounter(value.tag)) {
            names.push_back(name);
        }
    }
    Values before = walk.values;
    for (int look = 0; look < 2; ++look) {
        for (std::size_t begin = 0; begin < names.size(); begin += atOnce) {
            const auto end = std::min(names.size(), begin + atOnce);
            for (const auto &found : check.exchange.get({names.data() + begin, names.data() + end})) {
                const host::Object *object = found ? region.objectOf(found->name) : nullptr;
                const auto earlier = object == nullptr ? before.end() : before.find(found->name);
                if (earlier == before.end()) {
                    continue;
                }
                const bool hasWide = wideOne(check.objects, *object) != nullptr;
                const Name discontinuity = discontinuityOf(check.objects, region, *object, found->name);
                const Value *told = check.value(discontinuity);
                if (isFallen(earlier->second, found->value, hasWide) &&
                    (told == nullptr || check.now(discontinuity) == *told)) {
                    check.report.broken(Rule::falls, found->name,
                                        "was " + textOf(earlier->second) + ", is " + textOf(found->value));
                }
                earlier->second = found->value;
            }
        }
    }
}

} // namespace

void checkCounters(Check &check)
{
    const auto upTime = check.upTime();
    if (upTime && *upTime < check.startedAt) {
        check.report.fact("the agent has started anew meanwhile: counters were not looked at");
        return;
    }
    for (const auto &[region, walk] : check.walks) {
        checkFalls(check, *region, walk);
        for (const auto &[name, value] : walk.values) {
            if (value.tag == Tag::counter64) {
                checkHalves(check, *region->objectOf(name), name);
            }
        }
    }
}

} // namespace ipmib::agentcheck
