// SPDX-License-Identifier: BSD-3-Clause
// What the platform waits for, behind one descriptor that the host's own event loop watches.
#include "core/platform_loop.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include <array>
#include <cstdint>

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
    std::array<epoll_event, 32> events;
    const int count = epoll_wait(epoll_.get(), events.data(), events.size(), 0);
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

bool Timer::open(PlatformLoop &loop, PlatformLoop::Handler handler)
{
    fd_ = Descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    loop_ = &loop;
    return fd_ && loop.watch(fd_.get(), PlatformLoop::Work::background, [this, handler = std::move(handler)] {
        std::uint64_t expirations;
        if (read(fd_.get(), &expirations, sizeof expirations) == sizeof expirations) {
            armed_ = false;
            handler();
        }
    });
}

void Timer::close()
{
    if (fd_) {
        loop_->forget(fd_.get());
        fd_.reset();
    }
    armed_ = false;
}

void Timer::arm(unsigned milliseconds)
{
    itimerspec when{};
    when.it_value.tv_sec = milliseconds / 1000;
    when.it_value.tv_nsec = static_cast<long>(milliseconds % 1000) * 1'000'000;
    if (milliseconds == 0) {
        when.it_value.tv_nsec = 1; // 0 would disarm it
    }
    armed_ = timerfd_settime(fd_.get(), 0, &when, nullptr) == 0;
}

void Timer::disarm()
{
    const itimerspec never{};
    timerfd_settime(fd_.get(), 0, &never, nullptr);
    armed_ = false;
}

} // namespace ipmib::platform
