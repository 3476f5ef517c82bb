// SPDX-License-Identifier: BSD-3-Clause
// Counters: the two sizes of one, and that they do not fall.
#include "rules.h"

#include <algorithm>
#include <span>

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

struct Halves {
    Name low;
    Name wide;
};

// Each wide one between two of the other, all in one packet.
std::vector<std::optional<Fault>> faultsOf(Check &check, std::span<const Halves> halves)
{
    std::vector<Name> names;
    for (const Halves &one : halves) {
        names.insert(names.end(), {one.low, one.wide, one.low});
    }
    const auto found = check.exchange.get(names);
    std::vector<std::optional<Fault>> faults(halves.size());
    for (std::size_t i = 0; i < halves.size(); ++i) {
        const auto *three = &found[3 * i];
        if (!std::all_of(three, three + 3, [](const auto &one) { return one && isCounter(one->value.tag); })) {
            continue;
        }
        const auto first = static_cast<std::uint32_t>(three[0]->value.number);
        const auto between = static_cast<std::uint32_t>(three[1]->value.number) - first;
        const auto last = static_cast<std::uint32_t>(three[2]->value.number) - first;
        if (between > last) {
            faults[i] = Fault{Rule::lowHalf, "is " + textOf(three[0]->value) + ", and " +
                                                 check.objects.text(halves[i].wide) + " is " + textOf(three[1]->value)};
        }
    }
    return faults;
}

void checkHalves(Check &check, const Region &region, const Walk &walk)
{
    constexpr std::size_t atOnce = 4;
    std::vector<Halves> all;
    for (const auto &[name, value] : walk.values) {
        const host::Object &object = *region.objectOf(name);
        if (const host::Object *low = lowerHalf(check.objects, object); low != nullptr && isCounter(value.tag)) {
            all.push_back({extended(nameOf(*low), instanceOf(name, object)), name});
        }
    }
    for (std::size_t begin = 0; begin < all.size(); begin += atOnce) {
        const auto some = std::span(all).subspan(begin, std::min(atOnce, all.size() - begin));
        const auto faults = faultsOf(check, some);
        for (std::size_t i = 0; i < some.size(); ++i) {
            if (faults[i]) {
                doubt(check, some[i].low, [&check, one = some[i]] { return faultsOf(check, {&one, 1}).front(); });
            }
        }
    }
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

bool isFallen(const Objects &objects, const host::Object &object, const Value &before, const Value &after)
{
    if (before.tag != after.tag || after.number >= before.number) {
        return false;
    }
    // What is less may have wrapped; where it may do so between two looks, there is one of 64 bits.
    return before.tag == Tag::counter64 || (static_cast<std::uint32_t>(after.number - before.number) > UINT32_MAX / 2 &&
                                            wideOne(objects, object) == nullptr);
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
                const Name discontinuity = discontinuityOf(check.objects, region, *object, found->name);
                const Value *told = check.value(discontinuity);
                if (isFallen(check.objects, *object, earlier->second, found->value) &&
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
    if (upTime && check.isNewStart(*upTime)) {
        check.report.fact("the agent has started anew meanwhile: counters were not looked at");
        return;
    }
    for (const auto &[region, walk] : check.walks) {
        checkFalls(check, *region, walk);
        checkHalves(check, *region, walk);
    }
}

} // namespace ipmib::agentcheck
