// SPDX-License-Identifier: BSD-3-Clause
// What is answered for what there is not.
#include "rules.h"

#include <algorithm>

namespace ipmib::agentcheck
{
namespace
{

constexpr host::SubId noColumn = 4711;
constexpr host::SubId noInstance = 2147483646;
const Name behindAll{2, 39, 4294967295};

std::string textOf(const Answer &answer)
{
    if (answer.error != noError) {
        return errorText(answer.error) + ", at " + std::to_string(answer.errorIndex);
    }
    return answer.variables.empty() ? "no variables" : textOf(answer.variables.front().value);
}

void checkGet(Check &check, const Name &name, Rule rule)
{
    const Tag wanted = rule == Rule::noSuchObject ? Tag::noSuchObject : Tag::noSuchInstance;
    if (check.exchange.version() != Version::v1) {
        const Answer answer = check.exchange.rawGet({name});
        if (answer.isThere &&
            (answer.error != noError || answer.variables.size() != 1 || answer.variables.front().value.tag != wanted)) {
            check.report.broken(rule, name, "GET finds " + textOf(answer));
        }
    }
}

// An object's own identifier is no instance.
void checkObjects(Check &check, const Region &region)
{
    constexpr std::size_t atOnce = 12;
    for (std::size_t begin = 0; begin < region.objects.size(); begin += atOnce) {
        std::vector<Name> names;
        for (std::size_t i = begin; i < std::min(begin + atOnce, region.objects.size()); ++i) {
            names.push_back(nameOf(*region.objects[i]));
        }
        for (const auto &found : check.exchange.get(names)) {
            if (found && !found->value.isException()) {
                check.report.broken(region.isTable ? Rule::noSuchInstance : Rule::scalarIndex, found->name,
                                    "GET finds " + textOf(found->value) + ", of the object without an instance");
            }
        }
    }
}

// What there is not takes nothing from what there is in the same packet.
void checkBetween(Check &check, const Name &there, const Name &absent)
{
    if (check.exchange.version() == Version::v1) {
        return;
    }
    doubt(check, absent, [=, &check]() -> std::optional<Fault> {
        const Answer answer = check.exchange.rawGet({there, absent, there});
        const Answer alone = check.exchange.rawGet({there});
        if (!answer.isThere || !alone.isThere || alone.error != noError || alone.variables.size() != 1 ||
            alone.variables.front().value.isException()) {
            return std::nullopt;
        }
        const auto isException = [&](std::size_t place) { return answer.variables[place].value.isException(); };
        if (answer.error == noError && answer.variables.size() == 3 && !isException(0) && isException(1) &&
            !isException(2)) {
            return std::nullopt;
        }
        return Fault{Rule::noSuchInstance, "GET between two that there are finds " + textOf(answer)};
    });
}

bool isNoSuchName(const Answer &answer)
{
    return answer.error == noSuchName && answer.errorIndex == 1;
}

void checkGetVersion1(Check &check, Exchange *exchange, const Name &name)
{
    if (exchange == nullptr) {
        return;
    }
    const Answer answer = exchange->rawGet({name});
    if (answer.isThere && !isNoSuchName(answer)) {
        check.report.broken(Rule::noSuchName, name, "GET in SNMPv1 finds " + textOf(answer));
    }
}

void checkEnd(Check &check, Exchange *version1)
{
    if (check.exchange.version() != Version::v1) {
        const Answer answer = check.exchange.rawGetNext(behindAll);
        const bool isRight = answer.error == noError && answer.variables.size() == 1 &&
                             answer.variables.front().value.tag == Tag::endOfMibView &&
                             answer.variables.front().name == behindAll;
        if (answer.isThere && !isRight) {
            check.report.broken(Rule::endOfMibView, behindAll, "GETNEXT finds " + textOf(answer));
        }
    }
    if (version1 != nullptr) {
        const Answer answer = version1->rawGetNext(behindAll);
        if (answer.isThere && !isNoSuchName(answer)) {
            check.report.broken(Rule::noSuchName, behindAll, "GETNEXT in SNMPv1 finds " + textOf(answer));
        }
    }
}

} // namespace

void checkAbsent(Check &check)
{
    Exchange *version1 = check.exchange.version() == Version::v1 ? &check.exchange : check.version1;
    for (const auto &[region, walk] : check.walks) {
        if (check.exchange.version() != Version::v1) {
            checkObjects(check, *region);
        }
        if (walk.values.empty()) {
            continue;
        }
        const Name &there = walk.values.begin()->first;
        const Name object = nameOf(*region->objectOf(there));
        for (const Name &name : {extended(object, std::vector<host::SubId>{noInstance}),
                                 extended(there, std::vector<host::SubId>{noInstance})}) {
            checkGet(check, name, Rule::noSuchInstance);
            checkGetVersion1(check, version1, name);
        }
        checkBetween(check, there, extended(object, std::vector<host::SubId>{noInstance}));
        const Name nobodys = extended(region->root, std::vector<host::SubId>{noColumn, 1});
        checkGet(check, nobodys, Rule::noSuchObject);
        checkGetVersion1(check, version1, nobodys);
        // A Counter64 is not there for SNMPv1.
        for (const auto &[name, value] : walk.values) {
            if (value.tag == Tag::counter64) {
                checkGetVersion1(check, version1, name);
                break;
            }
        }
    }
    checkEnd(check, version1);
}

} // namespace ipmib::agentcheck
