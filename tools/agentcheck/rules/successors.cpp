// SPDX-License-Identifier: BSD-3-Clause
// What follows identifiers that are no instances, and several at once.
#include "rules.h"

#include <algorithm>
#include <set>
#include <span>

namespace ipmib::agentcheck
{
namespace
{

// Between two answers from an instance in front of it, all in one packet.
struct Question {
    Name before;
    Name from;
};

// Identifiers close to the instance: longer, and shorter and beside it at these places.
std::vector<Name> around(const Name &instance, std::span<const std::size_t> places)
{
    std::vector<Name> names = {extended(instance, std::vector<host::SubId>{0}),
                               extended(instance, std::vector<host::SubId>{UINT32_MAX})};
    for (const std::size_t place : places) {
        for (const host::SubId id :
             {instance[place] - 1, instance[place] + 1, host::SubId{256}, host::SubId{65536}, UINT32_MAX}) {
            names.push_back(instance);
            names.back()[place] = id; // below 0 it is the greatest
        }
        names.emplace_back(instance.begin(), instance.begin() + static_cast<std::ptrdiff_t>(place));
    }
    constexpr std::size_t most = host::maxOidLength;
    std::erase_if(names, [](const Name &name) { return name.size() > most; });
    return names;
}

// The first and the last sub-identifier behind the object, or all of them.
std::vector<std::size_t> placesOf(const Name &instance, std::size_t objectSize, bool wantsAll)
{
    std::vector<std::size_t> places;
    for (std::size_t place = objectSize; place < instance.size(); ++place) {
        if (wantsAll || place == objectSize || place + 1 == instance.size()) {
            places.push_back(place);
        }
    }
    return places;
}

// The first and the last instance of each object, and what is around them. One object shows how all parts of the index
// are read.
std::vector<Question> questionsOf(const Region &region, const Walk &walk)
{
    std::set<Name, Ascending> from;
    for (auto each = walk.values.begin(); each != walk.values.end(); ++each) {
        const host::Object *object = region.objectOf(each->first);
        const auto next = std::next(each);
        const bool isFirst = each == walk.values.begin() || region.objectOf(std::prev(each)->first) != object;
        const bool isLast = next == walk.values.end() || region.objectOf(next->first) != object;
        if (isFirst || isLast) {
            const bool isOfFirstObject = host::isWithin(walk.values.begin()->first, object->oid.view());
            for (Name &name : around(each->first, placesOf(each->first, object->oid.size(), isOfFirstObject))) {
                from.insert(std::move(name));
            }
        }
    }
    std::vector<Question> questions;
    for (const Name &name : from) {
        const auto behind = walk.values.upper_bound(name);
        if (behind != walk.values.begin()) {
            questions.push_back({std::prev(behind)->first, name});
        }
    }
    return questions;
}

std::string nextText(const Objects &objects, const Variable &variable)
{
    return variable.value.isException() ? textOf(variable.value.tag) : objects.text(variable.name);
}

std::vector<std::optional<Fault>> faultsOf(Check &check, std::span<const Question> questions)
{
    std::vector<Name> names;
    for (const Question &question : questions) {
        names.insert(names.end(), {question.before, question.from, question.before});
    }
    const auto found = check.exchange.getNext(names);
    std::vector<std::optional<Fault>> faults(questions.size());
    for (std::size_t i = 0; i < questions.size(); ++i) {
        const auto &[first, asked, last] = std::tie(found[3 * i], found[3 * i + 1], found[3 * i + 2]);
        // What is wrong with the instance in front is told elsewhere, and the next may have come between.
        if (!first || !asked || !last || first->name != last->name || first->value.isException() ||
            !Ascending()(questions[i].from, first->name)) {
            continue;
        }
        if (asked->value.isException() || asked->name != first->name) {
            faults[i] = Fault{Rule::successor, "GETNEXT finds " + nextText(check.objects, *asked) + ", not " +
                                                   nextText(check.objects, *first)};
        }
    }
    return faults;
}

void checkAround(Check &check, const Region &region, const Walk &walk)
{
    constexpr std::size_t atOnce = 4;
    const std::vector<Question> questions = questionsOf(region, walk);
    for (std::size_t begin = 0; begin < questions.size(); begin += atOnce) {
        const auto some = std::span(questions).subspan(begin, std::min(atOnce, questions.size() - begin));
        const auto faults = faultsOf(check, some);
        for (std::size_t i = 0; i < some.size(); ++i) {
            if (faults[i]) {
                doubt(check, some[i].from, [&check, one = some[i]] { return faultsOf(check, {&one, 1}).front(); });
            }
        }
    }
}

// Columns without end are ascending all the same. The first part of every index that there is is less than this.
void checkColumnEnds(Check &check, const Region &region, const Walk &walk)
{
    constexpr std::size_t atOnce = 12;
    std::vector<Name> ends;
    for (const host::Object *object : region.objects) {
        const Name name = nameOf(*object);
        const auto first = walk.values.upper_bound(name);
        if (first != walk.values.end() && host::isWithin(first->first, name)) {
            ends.push_back(extended(name, std::vector<host::SubId>{UINT32_MAX}));
        }
    }
    for (std::size_t begin = 0; begin < ends.size(); begin += atOnce) {
        const std::vector<Name> some(ends.begin() + static_cast<std::ptrdiff_t>(begin),
                                     ends.begin() + static_cast<std::ptrdiff_t>(std::min(begin + atOnce, ends.size())));
        const auto found = check.exchange.getNext(some);
        for (std::size_t i = 0; i < some.size(); ++i) {
            const host::OidView object = host::OidView(some[i]).first(some[i].size() - 1);
            if (found[i] && !found[i]->value.isException() && host::isWithin(found[i]->name, object) &&
                Ascending()(some[i], found[i]->name)) {
                check.report.broken(Rule::columnEnds, some[i], "is followed by " + check.objects.text(found[i]->name));
            }
        }
    }
}

// A GETBULK with a variable that is not repeated and some that are: row by row, as GETNEXT finds them.
void checkRepeaters(Check &check, const Region &region)
{
    constexpr std::size_t most = 3;
    constexpr int repetitions = 3;
    std::vector<Name> asked = {Name(sysUpTime.begin(), sysUpTime.end() - 1)};
    for (const host::Object *object : region.objects) {
        const Name name = nameOf(*object);
        const auto first = check.walked(region.name).values.upper_bound(name);
        if (asked.size() <= most && first != check.walked(region.name).values.end() &&
            host::isWithin(first->first, name)) {
            asked.push_back(name);
        }
    }
    if (asked.size() == 1) {
        return;
    }
    check.exchange.getBulk(asked, 1, 0); // finds the one that is not repeated alone
    doubt(check, asked[1], [=, &check]() -> std::optional<Fault> {
        const auto found = check.exchange.getBulk(asked, 1, repetitions);
        std::vector<Name> from = asked;
        for (std::size_t i = 1; i + asked.size() - 1 < found.size(); ++i) {
            from.push_back(found[i].name);
        }
        from.resize(std::min(from.size(), found.size()));
        const auto expected = check.exchange.getNext(from);
        for (std::size_t i = 0; i < from.size(); ++i) {
            if (expected[i] && (found[i].name != expected[i]->name ||
                                found[i].value.isException() != expected[i]->value.isException())) {
                return Fault{Rule::bulks, "GETBULK with one variable that is not repeated and " +
                                              std::to_string(asked.size() - 1) + " that are has, in place " +
                                              std::to_string(i + 1) + ", " + nextText(check.objects, found[i]) +
                                              ", not " + nextText(check.objects, *expected[i])};
            }
        }
        return std::nullopt;
    });
}

// Walks of all that there is come from the region in front.
void checkArrival(Check &check, const Region &region)
{
    const Name start = region.isTable ? region.root : nameOf(*region.objects.front());
    Name justBefore = start;
    --justBefore.back();
    justBefore.push_back(UINT32_MAX);
    Name before = {1, 3, 6, 1};
    for (const auto &[other, walk] : check.walks) {
        const auto behind = walk.values.lower_bound(start);
        if (behind != walk.values.begin() && Ascending()(before, std::prev(behind)->first)) {
            before = std::prev(behind)->first;
        }
    }
    for (const Name &from : {before, justBefore}) {
        doubt(check, from, [=, &check]() -> std::optional<Fault> {
            const auto found = check.exchange.getNext({start, from, start});
            if (!found[0] || !found[1] || !found[2] || found[0]->name != found[2]->name ||
                found[0]->value.isException() || !Ascending()(from, found[0]->name)) {
                return std::nullopt;
            }
            if (!found[1]->value.isException() && !Ascending()(found[0]->name, found[1]->name)) {
                return std::nullopt; // or something between them
            }
            return Fault{Rule::successor, "GETNEXT finds " + nextText(check.objects, *found[1]) + ", not " +
                                              nextText(check.objects, *found[0])};
        });
    }
}

} // namespace

void checkSuccessors(Check &check)
{
    for (const auto &[region, walk] : check.walks) {
        if (!walk.values.empty()) {
            checkArrival(check, *region);
        }
        checkAround(check, *region, walk);
        checkColumnEnds(check, *region, walk);
        if (check.exchange.version() != Version::v1) {
            checkRepeaters(check, *region);
        }
    }
}

} // namespace ipmib::agentcheck
