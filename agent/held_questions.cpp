// SPDX-License-Identifier: BSD-3-Clause
// While there are any, an alarm looks every millisecond whether the rows have been read.

#include "held_questions.h"

#include "net_snmp.h"

#include <algorithm>
#include <utility>

namespace ipmib::agent
{
namespace
{

constexpr std::chrono::seconds longest{3}; // a client that asks five times, a second apart, still gets its answer
constexpr timeval between{0, 1'000};

} // namespace

void HeldQuestions::hold(const host::Source &source, std::size_t instance, Answer answer, const void *client)
{
    held_.push_back({&source, instance, Clock::now() + longest, std::move(answer), client});
    setAlarm(true);
}

void HeldQuestions::forget(const void *client)
{
    releaseIf([client](const Held &each) { return each.client == client; }, false);
}

void HeldQuestions::release(const host::Source *source)
{
    releaseIf([source](const Held &each) { return source == nullptr || each.source == source; });
}

void HeldQuestions::releaseAllOf(std::size_t instance)
{
    releaseIf([instance](const Held &each) { return each.instance == instance; });
}

template <class Predicate>
void HeldQuestions::releaseIf(Predicate isDue, bool isWanted)
{
    const auto due = std::stable_partition(held_.begin(), held_.end(), std::not_fn(isDue));
    std::vector<Held> released(std::make_move_iterator(due), std::make_move_iterator(held_.end()));
    held_.erase(due, held_.end());
    for (const Held &each : released) {
        instances_.select(each.instance);
        each.answer(isWanted);
    }
    setAlarm(!held_.empty());
}

bool HeldQuestions::isDue(const Held &held) const
{
    instances_.select(held.instance);
    return held.source->areRead() || held.end <= Clock::now();
}

void HeldQuestions::setAlarm(bool on)
{
    if (on && alarm_ == 0) {
        alarm_ = snmp_alarm_register_hr(
            between, SA_REPEAT,
            [](unsigned, void *self) {
                auto *held = static_cast<HeldQuestions *>(self);
                held->releaseIf([held](const Held &each) { return held->isDue(each); });
            },
            this);
    } else if (!on && alarm_ != 0) {
        snmp_alarm_unregister(alarm_);
        alarm_ = 0;
    }
}

} // namespace ipmib::agent
