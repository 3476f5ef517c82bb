// SPDX-License-Identifier: BSD-3-Clause
#include "link_clock.h"

#include "core/log.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace ipmib::simulated
{
namespace
{

std::uint32_t operStatusAt(const Interface &interface, Time time)
{
    return interface.exists(time) ? interface.row(time).oper_status : 0;
}

} // namespace

LinkClock::~LinkClock()
{
    if (timer_ >= 0) {
        close(timer_);
    }
}

void LinkClock::open()
{
    timer_ = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK);
    if (timer_ < 0) {
        platform::logError("simulated: no timer, links that go up and down are told late: %s", std::strerror(errno));
    }
}

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
    std::uint64_t expirations;
    if (timer_ >= 0 && read(timer_, &expirations, sizeof expirations) > 0) {
        setTimer(now);
    }
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
    constexpr Time perSecond = 1'000;
    constexpr long nanoseconds = 1'000'000;
    next_ = changed_ == nullptr ? std::nullopt : nextChange();
    if (timer_ < 0) {
        return;
    }
    itimerspec setting{};
    if (const auto next = next_ && alsoAt_ ? std::min(next_, alsoAt_) : next_ ? next_ : alsoAt_) {
        const Time left = std::max<Time>(*next > now ? *next - now : 0, 1); // 0 would stop it
        setting.it_value.tv_sec = static_cast<time_t>(left / perSecond);
        setting.it_value.tv_nsec = static_cast<long>(left % perSecond) * nanoseconds;
    }
    timerfd_settime(timer_, 0, &setting, nullptr);
}

} // namespace ipmib::simulated
