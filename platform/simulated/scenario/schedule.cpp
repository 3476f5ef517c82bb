// SPDX-License-Identifier: BSD-3-Clause
// At which times something holds.
#include "scenario/schedule.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ipmib::simulated
{
namespace
{

constexpr Time forEver = std::numeric_limits<Time>::max();

} // namespace

Time readSeconds(const Value &value)
{
    return static_cast<Time>(std::llround(value.real(0, longestSeconds) * msPerSecond));
}

Schedule Schedule::always()
{
    Schedule schedule;
    schedule.periods_ = {{0, forEver, 0}};
    return schedule;
}

Schedule Schedule::read(const Value &list)
{
    Schedule schedule;
    list.each([&schedule](const Value &value) {
        Object object(value);
        Period period{0, forEver, 0};
        period.from = readSeconds(object.need("from"));
        if (const auto to = object.find("to")) {
            period.to = readSeconds(*to);
            if (period.to <= period.from) {
                to->fail("a period ends after it begins");
            }
        }
        if (const auto every = object.find("every")) {
            period.every = readSeconds(*every);
            if (period.to == forEver || period.every <= period.to - period.from) {
                every->fail("a period that comes again has an end, and comes after more seconds than it lasts");
            }
        }
        object.finish();
        if (!schedule.periods_.empty()) {
            const Period &last = schedule.periods_.back();
            if (last.every != 0 || last.to == forEver || period.from < last.to) {
                value.fail("periods follow each other; one without an end, or that comes again, is the last one");
            }
        }
        schedule.periods_.push_back(period);
    });
    return schedule;
}

bool Schedule::isForEver() const
{
    return !never() && periods_.back().to == forEver;
}

Schedule Schedule::startingAt(Time moment, const Schedule *before) const
{
    Schedule schedule = *this;
    for (Period &period : schedule.periods_) {
        period.from += moment;
        period.to = period.to == forEver ? forEver : period.to + moment;
    }
    if (before != nullptr) {
        schedule.coveredBefore_ = before->coveredBefore(moment);
        const bool isSame = before->covers(moment) == schedule.covers(moment);
        schedule.changedBefore_ = isSame ? before->lastChange(moment) : moment;
    }
    return schedule;
}

bool Schedule::isWithinOne(Time time) const
{
    return std::any_of(periods_.begin(), periods_.end(), [time](const Period &period) {
        if (time < period.from) {
            return false;
        }
        const Time since = time - period.from;
        return (period.every == 0 ? since : since % period.every) < period.to - period.from;
    });
}

Time Schedule::coveredBefore(Time time) const
{
    Time covered = coveredBefore_;
    for (const Period &period : periods_) {
        if (time <= period.from) {
            break;
        }
        const Time since = time - period.from;
        const Time length = period.to - period.from;
        if (period.every == 0) {
            covered += std::min(since, length);
        } else {
            covered += since / period.every * length + std::min(since % period.every, length);
        }
    }
    return covered;
}

Time Schedule::lastChange(Time time) const
{
    Time change = changedBefore_;
    for (const Period &period : periods_) {
        if (time < period.from) {
            break;
        }
        const Time since = time - period.from;
        const Time begin = period.from + (period.every == 0 ? 0 : since / period.every * period.every);
        const Time length = period.to - period.from;
        change = time - begin < length ? begin : begin + length;
    }
    return change;
}

std::optional<Time> Schedule::nextChange(Time time) const
{
    for (const Period &period : periods_) {
        if (time < period.from) {
            return period.from;
        }
        const Time begin = period.from + (period.every == 0 ? 0 : (time - period.from) / period.every * period.every);
        const Time end = period.to == forEver ? forEver : begin + (period.to - period.from);
        if (time < end) {
            return end == forEver ? std::nullopt : std::optional(end);
        }
        if (period.every != 0) {
            return begin + period.every;
        }
    }
    return std::nullopt;
}

} // namespace ipmib::simulated
