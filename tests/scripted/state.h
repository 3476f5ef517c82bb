// SPDX-License-Identifier: BSD-3-Clause
// What the scripted services share among themselves; no test looks at it.
#pragma once

#include "call_log.h"
#include "world.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace ipmib::scripted
{

struct State {
    World world;
    Calls calls;
    bool tellsCalls = true;
    std::vector<std::string> complaints;
    std::set<std::uint32_t> answered;
    std::map<const void *, std::vector<unsigned char>> cursors;
    std::set<std::uintptr_t> openIterators;
    std::uintptr_t lastIterator = 0;
};

State &state();

// Adds the line that `call` makes to the calls, if they are told.
template <typename Call>
void note(Call call)
{
    if (state().tellsCalls) {
        state().calls.push_back(call());
    }
}

// The code that the script makes a service fail with, or 0.
inline std::uint32_t scriptedFailure(const char *service)
{
    const auto &failing = world().failing;
    const auto found = failing.find(service);
    return found == failing.end() ? 0 : found->second;
}

// A result that the module has no business to look at.
inline constexpr std::uint32_t notExamined = 0xBAD;

// Answers from a table of the script: fills the record and returns 0, or spoils it and returns a failure.
template <typename Record>
std::uint32_t answer(const char *service, const Record *found, Record *record)
{
    const std::uint32_t failure = scriptedFailure(service);
    if (failure != 0 || found == nullptr) {
        scribble(record);
        return failure != 0 ? failure : World::nothingThere;
    }
    *record = *found;
    return 0;
}

template <typename Key, typename Value>
const Value *find(const std::map<Key, Value> &map, const Key &key)
{
    const auto found = map.find(key);
    return found == map.end() ? nullptr : &found->second;
}

} // namespace ipmib::scripted
