// SPDX-License-Identifier: BSD-3-Clause
#include "link_clock.h"

#include <algorithm>

namespace ipmib::simulated
{
namespace
{

std::uint32_t operStatusAt(const Interface &interface, Time time)
{
    return interface.exists(time) ? interface.row(time).oper_status : 0;
}

} // namespace

void LinkClock::listen(IpmibLinkChanged changed, void *context, Time now)
{
    changed_ = changed;
    context_ = context;
    beginAt(now);
}

void LinkClock::beginAt(Time now)
{
    told_ = now;
    setTimer(now);
}

void LinkClock::run(Time now)
{
    while (next_ && *next_ <= now) {
        told_ = *next_;
        tellChangesAt(told_);
        next_ = nextChange();
    }
}

void LinkClock::wakeUp(Time now)
{
    run(now);
    setTimer(now);
}

std::optional<Time> LinkClock::nextChange() const
{
    std::optional<Time> first;
    for (const Interface &interface : device_.interfaces()) {
        const auto next = interface.outages.nextChange(told_);
        first = next && first ? std::min(first, next) : next ? next : first;
    }
    return first;
}

void LinkClock::tellChangesAt(Time time) const
{
    for (const Interface &interface : device_.interfaces()) {
        tell(interface, operStatusAt(interface, time - 1), operStatusAt(interface, time));
    }
}

void LinkClock::tell(const Interface &interface, std::uint32_t before, std::uint32_t now) const
{
    if (before != now && changed_ != nullptr) {
        const IpmibLinkChange change{interface.ifIndex,
                                     static_cast<std::uint32_t>(interface.enabled ? IPMIB_ADMIN_UP : IPMIB_ADMIN_DOWN),
                                     now, before};
        changed_(context_, &change);
    }
}

LinkClock::States LinkClock::states() const
{
    States states;
    for (const Interface &interface : device_.interfaces()) {
        states.push_back(operStatusAt(interface, device_.time()));
    }
    return states;
}

void LinkClock::tellChangesSince(const States &before) const
{
    for (std::size_t i = 0; i < before.size(); ++i) {
        const Interface &interface = device_.interfaces()[i];
        tell(interface, before[i], operStatusAt(interface, device_.time()));
    }
}

void LinkClock::setTimer(Time now)
{
    next_ = changed_ == nullptr ? std::nullopt : nextChange();
    if (alsoAt_ && *alsoAt_ <= now) {
        alsoAt_.reset();
    }
    wakeUpAt_(next_ && alsoAt_ ? std::min(next_, alsoAt_) : next_ ? next_ : alsoAt_);
}

} // namespace ipmib::simulated
