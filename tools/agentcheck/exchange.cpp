// SPDX-License-Identifier: BSD-3-Clause
// Asks, and holds what comes back to the rules of requests and answers.
#include "exchange.h"

#include <algorithm>

namespace ipmib::agentcheck
{
namespace
{

constexpr const char *wordOf(bool isNext)
{
    return isNext ? "GETNEXT" : "GET";
}

} // namespace

// Whether an agent that has not answered one question answers another; and what holds for all answers.
Answer Exchange::still(Answer answer, const Name &name)
{
    constexpr int most = 20; // each takes the time of all retries
    if (!answer.isThere) {
        report_.broken(Rule::answered, name, "no answer in " + session_.versionText());
        if (!session_.get({sysUpTime}).isThere) {
            throw NoAnswer(ClientSession::agent() + " no longer answers");
        }
        if (++unanswered_ == most) {
            throw NoAnswer(ClientSession::agent() + " leaves too much unanswered to go on");
        }
    }
    if (answer.isThere && answer.error == noError && answer.errorIndex != 0) {
        report_.broken(Rule::answered, name,
                       "the error's place is " + std::to_string(answer.errorIndex) + ", where there is no error");
    }
    return answer;
}

Exchange::Found Exchange::ask(Kind kind, const std::vector<Name> &names)
{
    if (names.empty()) {
        return {};
    }
    const bool isNext = kind == Kind::getNext;
    const Answer answer = still(isNext ? session_.getNext(names) : session_.get(names), names.front());
    Found found(names.size());
    if (!answer.isThere) {
        return found;
    }
    if (answer.error == tooBig && names.size() > 1) {
        return inHalves(kind, names);
    }
    if (answer.error == noSuchName && session_.version() == Version::v1) {
        if (answer.errorIndex >= 1 && answer.errorIndex <= names.size()) {
            return withoutOne(kind, names, answer.errorIndex - 1);
        }
        report_.broken(Rule::noSuchName, names.front(), "the error's place is " + std::to_string(answer.errorIndex));
        return found;
    }
    if (answer.error != noError) {
        if (names.size() > 1) {
            return inHalves(kind, names);
        }
        report_.broken(Rule::answered, names.front(),
                       errorText(answer.error) + " is the answer to a " + wordOf(isNext) + " in " +
                           session_.versionText());
        return found;
    }
    if (answer.variables.size() != names.size()) {
        report_.broken(Rule::complete, names.front(),
                       std::to_string(names.size()) + " variables asked by " + wordOf(isNext) + ", " +
                           std::to_string(answer.variables.size()) + " answered");
        return names.size() > 1 ? inHalves(kind, names) : found;
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (isUsable(kind, names[i], answer.variables[i])) {
            found[i] = answer.variables[i];
        }
    }
    return found;
}

bool Exchange::isUsable(Kind kind, const Name &asked, const Variable &found)
{
    if (session_.version() == Version::v1 && found.value.tag == Tag::counter64) {
        report_.broken(Rule::noCounter64, found.name, "a Counter64");
    }
    if (session_.version() == Version::v1 && found.value.isException()) {
        report_.broken(Rule::noSuchName, asked, textOf(found.value.tag) + " in SNMPv1");
    }
    if (kind == Kind::get && found.name != asked) {
        report_.broken(Rule::complete, asked, "a GET is answered with " + host::textOf(found.name));
        return false;
    }
    return true;
}

Exchange::Found Exchange::inHalves(Kind kind, const std::vector<Name> &names)
{
    const auto middle = names.begin() + static_cast<std::ptrdiff_t>(names.size() / 2);
    Found found = ask(kind, {names.begin(), middle});
    Found rest = ask(kind, {middle, names.end()});
    found.insert(found.end(), std::make_move_iterator(rest.begin()), std::make_move_iterator(rest.end()));
    return found;
}

Exchange::Found Exchange::withoutOne(Kind kind, const std::vector<Name> &names, std::size_t place)
{
    const auto at = static_cast<std::ptrdiff_t>(place);
    std::vector<Name> others = names;
    others.erase(others.begin() + at);
    Found found = ask(kind, others);
    const Tag tag = kind == Kind::getNext ? Tag::endOfMibView : Tag::noSuchInstance;
    found.insert(found.begin() + at, Variable{names[place], Value{tag, 0, {}, {}}});
    return found;
}

std::vector<Variable> Exchange::getBulk(const std::vector<Name> &names, int nonRepeaters, int maxRepetitions)
{
    const Answer answer = still(session_.getBulk(names, nonRepeaters, maxRepetitions), names.back());
    const std::string asked = "GETBULK of " + std::to_string(maxRepetitions);
    if (answer.isThere && answer.error != noError) {
        report_.broken(Rule::answered, names.back(), errorText(answer.error) + " is the answer to a " + asked);
        return {};
    }
    const auto once = static_cast<std::size_t>(nonRepeaters);
    const std::size_t most = once + (names.size() - once) * static_cast<std::size_t>(maxRepetitions);
    if (answer.isThere && (answer.variables.empty() || answer.variables.size() > most)) {
        report_.broken(Rule::complete, names.back(),
                       asked + " has " + std::to_string(answer.variables.size()) + " variables, not 1 to " +
                           std::to_string(most));
    }
    return answer.variables;
}

} // namespace ipmib::agentcheck
