// SPDX-License-Identifier: BSD-3-Clause
// What the platform waits for, behind one descriptor that the host's own event loop watches.
#include "core/platform_loop.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include <cstdint>
#include <vector>

namespace ipmib::platform
{

bool PlatformLoop::open()
{
    epoll_ = Descriptor(epoll_create1(EPOLL_CLOEXEC));
    return static_cast<bool>(epoll_);
}

void PlatformLoop::close()
{
    watches_.clear();
    timers_.reset();
    epoll_.reset();
}

bool PlatformLoop::watch(int fd, Work work, Handler handler)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) != 0) {
        return false;
    }
    watches_[fd] = std::make_shared<Watch>(Watch{work, std::move(handler)});
    return true;
}

void PlatformLoop::forget(int fd)
{
    if (watches_.erase(fd) != 0) {
        epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, fd, nullptr);
    }
}

bool PlatformLoop::heed(int fd, bool on)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    // Taken out, since the kernel reports errors of every socket that is in.
    return epoll_ctl(epoll_.get(), on ? EPOLL_CTL_ADD : EPOLL_CTL_DEL, fd, &event) == 0;
}

// One at a time: the kernel puts what it has reported behind all others that are readable, so each has its turn.
void PlatformLoop::run()
{
    const auto end = std::chrono::steady_clock::now() + longestTurn;
    packetWaits_ = false;
    for (unsigned i = 0; i < mostInTurn; ++i) {
        epoll_event event;
        if (epoll_wait(epoll_.get(), &event, 1, 0) != 1) {
            return;
        }
        if (const auto found = watches_.find(event.data.fd); found != watches_.end()) {
            const std::shared_ptr<Watch> watch = found->second;
            watch->handler();
        }
        if (std::chrono::steady_clock::now() >= end) {
            return;
        }
    }
}

void PlatformLoop::runAnnouncements()
{
    packetWaits_ = true;
    std::vector<epoll_event> events(watches_.size()); // however much other work there is
    const int count = epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), 0);
    for (int i = 0; i < count; ++i) {
        const auto found = watches_.find(events[static_cast<std::size_t>(i)].data.fd);
        if (found == watches_.end()) {
            continue; // an earlier handler of this round forgot it
        }
        const std::shared_ptr<Watch> watch = found->second;
        if (watch->work == Work::announcement) {
            watch->handler();
        }
    }
}

bool PlatformLoop::openTimers()
{
    if (!timers_) {
        timers_ = Descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
        if (timers_ && !watch(timers_.get(), Work::background, [this] { runTimers(); })) {
            timers_.reset();
        }
    }
    return static_cast<bool>(timers_);
}

void PlatformLoop::setTimers()
{
    itimerspec when{};
    if (!armed_.empty()) {
        const auto left = armed_.begin()->first.time_since_epoch();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        when.it_value.tv_sec = static_cast<time_t>(seconds.count());
        when.it_value.tv_nsec = static_cast<long>(std::chrono::nanoseconds(left - seconds).count());
    }
    timerfd_settime(timers_.get(), TFD_TIMER_ABSTIME, &when, nullptr);
}

// One at a time, like all else.
void PlatformLoop::runTimers()
{
    std::uint64_t expirations;
    if (read(timers_.get(), &expirations, sizeof expirations) != sizeof expirations) {
        return;
    }
    if (!armed_.empty() && armed_.begin()->first <= Clock::now()) {
        Timer &timer = *armed_.begin()->second;
        armed_.erase(armed_.begin());
        timer.armed_ = false;
        const Handler handler = timer.handler_; // which may close its timer
        handler();
    }
    setTimers();
}

bool Timer::open(PlatformLoop &loop, PlatformLoop::Handler handler)
{
    close();
    if (!loop.openTimers()) {
        return false;
    }
    loop_ = &loop;
    handler_ = std::move(handler);
    return true;
}

void Timer::close()
{
    if (loop_ != nullptr) {
        disarm();
        loop_ = nullptr;
    }
}

void Timer::arm(unsigned milliseconds)
{
    loop_->armed_.erase({end_, this});
    end_ = PlatformLoop::Clock::now() + std::chrono::milliseconds(milliseconds) + std::chrono::nanoseconds(1);
    loop_->armed_.emplace(end_, this);
    armed_ = true;
    if (loop_->armed_.begin()->second == this) {
        loop_->setTimers();
    }
}

void Timer::disarm()
{
    if (std::exchange(armed_, false)) {
        loop_->armed_.erase({end_, this});
        loop_->setTimers();
    }
}

} // namespace ipmib::platform
