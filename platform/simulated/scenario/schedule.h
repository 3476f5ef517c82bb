// SPDX-License-Identifier: BSD-3-Clause
// At which times something holds: periods, of which the last one may come again and again.
#pragma once

#include "scenario/value.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace ipmib::simulated
{

// Milliseconds since the device was started.
using Time = std::uint64_t;
inline constexpr Time msPerSecond = 1'000;

class Schedule
{
  public:
    // [{"from": 10, "to": 20}, {"from": 60, "to": 65, "every": 30}], in seconds; without "to": for ever.
    static Schedule read(const Value &list);
    static Schedule always();
    // The same with times that count from a moment, before which the other one holds, or nothing.
    Schedule startingAt(Time moment, const Schedule *before = nullptr) const;

    // Whether one of its periods has no end.
    bool isForEver() const;
    bool never() const { return periods_.empty(); }
    bool covers(Time time) const { return !never() && isWithinOne(time); }
    // How much of the time before this moment is covered.
    Time coveredBefore(Time time) const;
    // When a period began or ended last, at this moment at the latest; 0 when none has yet.
    Time lastChange(Time time) const;
    // When one begins or ends next, after this moment; nothing when none does any more.
    std::optional<Time> nextChange(Time time) const;

  private:
    struct Period {
        Time from;
        Time to;    // the moment at which it is over
        Time every; // 0: once
    };

    bool isWithinOne(Time time) const;

    std::vector<Period> periods_; // ascending, apart from each other
    Time coveredBefore_ = 0;      // by what was in force before these
    Time changedBefore_ = 0;      // when that changed last, or came to its end
};

inline constexpr double longestSeconds = 1e9; // some thirty years
// Seconds, as they stand in a scenario.
Time readSeconds(const Value &value);

} // namespace ipmib::simulated
