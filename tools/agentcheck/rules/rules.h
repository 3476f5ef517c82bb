// SPDX-License-Identifier: BSD-3-Clause
// The rules in groups, a file each. All look at one agent's regions, which have been walked once before.
#pragma once

#include "walks.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>

namespace ipmib::agentcheck
{

struct Settings {
    std::size_t rows = 200; // of a column
    bool mayWrite = false;
    std::chrono::milliseconds settleTime{1000}; // between looks at what does not fit together
};

struct Fault {
    Rule rule;
    std::string seen;
};
using Look = std::function<std::optional<Fault>()>;

struct Doubt {
    Name name;
    Look look;
    Fault fault; // as it was seen last
};

struct Check {
    const Settings &settings;
    const Objects &objects;
    Report &report;
    Exchange &exchange;
    Exchange *version1;                          // the same agent in SNMPv1; null where there is nothing to compare
    std::uint64_t startedAt;                     // in sysUpTime
    std::chrono::steady_clock::time_point began; // before that
    std::map<const Region *, Walk> walks{};
    std::vector<Doubt> doubts{};

    // Empty for a region that is not looked at.
    const Walk &walked(std::string_view region) const;
    // The value in the walk; null when there is none.
    const Value *value(const Name &name) const;
    // What GET finds now; empty for an exception.
    std::optional<Value> now(const Name &name);
    std::optional<std::uint64_t> upTime();
    // Whether a sysUpTime of now is that of an agent that has started anew since the check began.
    bool isNewStart(std::uint64_t upTime) const;
};

// Rows change while they are looked at, and agents remember some longer than others, so that what does not fit together
// may have been right twice. Looks, and what is wrong is kept until `reportWhatIsStillWrong`.
void doubt(Check &check, const Name &name, Look look);
// Looks again, twice, with a pause before: what each look has found wrong is reported.
void reportWhatIsStillWrong(Check &check);

void checkValues(Check &check);
void checkIndexes(Check &check);
void checkSameRows(Check &check);
void checkSuccessors(Check &check);
void checkRelations(Check &check);
void checkPointers(Check &check);
void checkZones(Check &check);
void checkWholeRows(Check &check);
void checkInterfaces(Check &check);
void checkConnections(Check &check);
void checkCounts(Check &check);
void checkCounters(Check &check);
void checkTimes(Check &check);
void checkAbsent(Check &check);
void checkWrites(Check &check);

} // namespace ipmib::agentcheck
