// SPDX-License-Identifier: BSD-3-Clause
// Waits with the library's own select, in which its sessions, registered descriptors and alarms meet.
#include "event_loop.h"

#include "datagrams.h"
#include "log.h"
#include "net_snmp.h"
#include "service_manager.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <optional>
#include <system_error>

namespace ipmib::agent
{
namespace
{

// A set of descriptors of any size.
class DescriptorSet
{
  public:
    DescriptorSet()
    {
        netsnmp_large_fd_set_init(&set_, FD_SETSIZE);
        NETSNMP_LARGE_FD_ZERO(&set_);
    }
    ~DescriptorSet() { netsnmp_large_fd_set_cleanup(&set_); }
    DescriptorSet(const DescriptorSet &) = delete;
    DescriptorSet &operator=(const DescriptorSet &) = delete;

    netsnmp_large_fd_set *get() { return &set_; }

  private:
    netsnmp_large_fd_set set_;
};

} // namespace

EventLoop::EventLoop()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGHUP);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN); // a TCP peer may be gone before its answer is written
    signals_ = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    if (signals_ < 0) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
    register_readfd(
        signals_, [](int, void *self) { static_cast<EventLoop *>(self)->takeSignal(); }, this);
}

EventLoop::~EventLoop()
{
    unregister_readfd(signals_);
    close(signals_);
}

void EventLoop::run(const std::function<void()> &reload)
{
    const ServiceWatchdog watchdog;
    std::optional<LimitedLog> limitedLog(std::in_place);
    while (!stopping_) {
        wait();
        if (reloading_ && !stopping_) {
            limitedLog.reset(); // whoever may send signals may fill the log
            reload();
            limitedLog.emplace();
        }
        reloading_ = false;
    }
}

void EventLoop::takeSignal()
{
    signalfd_siginfo info;
    while (read(signals_, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        if (info.ssi_signo == SIGHUP) {
            reloading_ = true;
        } else {
            stopping_ = true;
        }
    }
}

void EventLoop::wait()
{
    DescriptorSet readable;
    DescriptorSet writable;
    DescriptorSet exceptional;
    int descriptors = 0;
    int block = 1;
    timeval timeout{};
    snmp_select_info2(&descriptors, readable.get(), &timeout, &block);
    netsnmp_external_event_info2(&descriptors, readable.get(), writable.get(), exceptional.get());
    int ready = netsnmp_large_fd_set_select(descriptors, readable.get(), writable.get(), exceptional.get(),
                                            block != 0 ? nullptr : &timeout);
    if (ready > 0) { // requests first: the platform always has work while the system changes fast
        if (choose_) {
            choose_(*readable.get());
        }
        snmp_read2(readable.get());
        for (DescriptorSet waiting; Datagrams::all().leaveWaiting(*waiting.get());) {
            snmp_read2(waiting.get());
        }
        netsnmp_dispatch_external_events2(&ready, readable.get(), writable.get(), exceptional.get());
    } else if (ready == 0) {
        snmp_timeout();
    }
    run_alarms();
    netsnmp_check_outstanding_agent_requests();
}

PlatformEvents::PlatformEvents(const IpmibPlatformHooks *platform, host::Instances *instances)
    : platform_(platform), instances_(instances)
{
    if (platform != nullptr && platform->descriptor != nullptr && (descriptor_ = platform->descriptor()) >= 0) {
        register_readfd(
            descriptor_, [](int, void *self) { static_cast<const PlatformEvents *>(self)->dispatch(); }, this);
    }
}

void PlatformEvents::dispatch() const
{
    if (instances_ != nullptr) {
        instances_->select(host::Instances::first);
    }
    platform_->dispatch();
    if (done_) {
        done_();
    }
}

PlatformEvents::~PlatformEvents()
{
    if (descriptor_ >= 0) {
        unregister_readfd(descriptor_);
    }
}

} // namespace ipmib::agent
