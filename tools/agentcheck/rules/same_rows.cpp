// SPDX-License-Identifier: BSD-3-Clause
// The same instances with the same values, however they are asked for.
#include "rules.h"

#include <algorithm>
#include <array>

namespace ipmib::agentcheck
{
namespace
{

using Differences = std::map<Name, std::string, Ascending>;
constexpr int looks = 3;

// Whether two looks at one value may both be right, though something was counted between them.
bool isGrown(const Value &before, const Value &after)
{
    return before.tag == after.tag && ((before.tag == Tag::counter32 &&
                                        static_cast<std::uint32_t>(after.number - before.number) < UINT32_MAX / 2) ||
                                       (before.tag == Tag::counter64 && after.number >= before.number));
}

const Value *valueIn(const Walk &walk, const Name &name)
{
    const auto found = walk.values.find(name);
    return found == walk.values.end() ? nullptr : &found->second;
}

Differences differences(const Walk &reference, const Walk &other)
{
    Differences found;
    for (const auto &[name, value] : reference.values) {
        const Value *there = valueIn(other, name);
        if (there == nullptr && !other.isBroken) {
            found.emplace(name, "is left out");
        } else if (there != nullptr && *there != value && !isGrown(value, *there)) {
            found.emplace(name, "is " + textOf(*there) + ", by GETNEXT " + textOf(value));
        }
    }
    for (const auto &[name, value] : other.values) {
        if (valueIn(reference, name) == nullptr && !reference.isBroken) {
            found.emplace(name, "is there, and GETNEXT does not find it");
        }
    }
    return found;
}

bool agree(const Walk &first, const Walk &second, const Name &name)
{
    const Value *left = valueIn(first, name);
    const Value *right = valueIn(second, name);
    return left == nullptr ? right == nullptr : right != nullptr && *left == *right;
}

void dropCounter64(Walk &walk)
{
    std::erase_if(walk.values, [](const auto &each) { return each.second.tag == Tag::counter64; });
}

struct Way {
    Rule rule;
    std::string name;
    std::function<Walk()> walk;
    bool hasCounter64 = true;
};

// What differs counts when it does so in each of several looks between two equal ones by GETNEXT.
void compare(Check &check, const Region &region, const Way &way)
{
    Walker walker(check.exchange, check.report, check.settings.rows);
    Walk reference = check.walks.at(&region);
    Differences sure;
    for (int look = 0; look < looks; ++look) {
        if (!way.hasCounter64) {
            dropCounter64(reference);
        }
        Differences seen = differences(reference, way.walk());
        if (seen.empty()) {
            return;
        }
        Walk after = walker.byGetNext(region);
        if (!way.hasCounter64) {
            dropCounter64(after);
        }
        std::erase_if(seen, [&](const auto &each) {
            return !agree(reference, after, each.first) || (look > 0 && !sure.contains(each.first));
        });
        sure = std::move(seen);
        if (sure.empty()) {
            return;
        }
        reference = std::move(after);
    }
    for (const auto &[name, text] : sure) {
        check.report.broken(way.rule, name, way.name + ": " + text);
    }
}

// The name that GETNEXT found this one from: the instance in front of it, or its column.
Name nameBefore(const Region &region, const Values &values, Values::const_iterator each)
{
    const host::Object *object = region.objectOf(each->first);
    if (each != values.begin() && region.objectOf(std::prev(each)->first) == object) {
        return std::prev(each)->first;
    }
    return nameOf(*object);
}

struct Doubt {
    Name before;
    Name name;
    std::string seen{};
};

// GET between two equal answers to GETNEXT.
void keepWrong(Exchange &exchange, std::vector<Doubt> &doubts)
{
    std::vector<Name> names;
    std::vector<Name> before;
    for (const Doubt &doubt : doubts) {
        names.push_back(doubt.name);
        before.push_back(doubt.before);
    }
    const auto first = exchange.getNext(before);
    const auto got = exchange.get(names);
    const auto second = exchange.getNext(before);
    std::vector<Doubt> wrong;
    for (std::size_t i = 0; i < doubts.size(); ++i) {
        if (first[i] && got[i] && second[i] && first[i]->name == names[i] && second[i]->name == names[i] &&
            first[i]->value == second[i]->value && got[i]->value != first[i]->value) {
            wrong.push_back({before[i], names[i], textOf(got[i]->value) + ", by GETNEXT " + textOf(first[i]->value)});
        }
    }
    doubts = std::move(wrong);
}

void compareWithGet(Check &check, const Region &region)
{
    constexpr std::size_t atOnce = 12;
    const Values &values = check.walks.at(&region).values;
    for (auto each = values.begin(); each != values.end();) {
        std::vector<Doubt> asked;
        std::vector<Name> names;
        for (; each != values.end() && names.size() < atOnce; ++each) {
            asked.push_back({nameBefore(region, values, each), each->first});
            names.push_back(each->first);
        }
        const auto got = check.exchange.get(names);
        std::vector<Doubt> doubts;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (got[i] && got[i]->value != values.at(names[i])) {
                doubts.push_back(asked[i]);
            }
        }
        for (int look = 0; look < looks && !doubts.empty(); ++look) {
            keepWrong(check.exchange, doubts);
        }
        for (const Doubt &doubt : doubts) {
            check.report.broken(Rule::gets, doubt.name, "is " + doubt.seen);
        }
    }
}

} // namespace

void checkSameRows(Check &check)
{
    Walker walker(check.exchange, check.report, check.settings.rows);
    for (const auto &[region, walk] : check.walks) {
        const Region &here = *region;
        compareWithGet(check, here);
        compare(check, here, {Rule::sideBySide, "side by side", [&] { return walker.sideBySide(here); }});
        if (check.exchange.version() != Version::v1) {
            for (const int size : {2, 10, 50}) {
                compare(check, here, {Rule::bulks, "GETBULK of " + std::to_string(size), [&] {
                                          return walker.byGetBulk(here, size);
                                      }});
            }
        }
        if (check.version1 != nullptr) {
            Walker old(*check.version1, check.report, check.settings.rows);
            compare(check, here, {Rule::otherVersion, "SNMPv1", [&] { return old.byGetNext(here); }, false});
        }
    }
}

} // namespace ipmib::agentcheck
