// SPDX-License-Identifier: BSD-3-Clause
// A simulated device, and the clock by which it lives.
#pragma once

#include "advertisements/row_hop_limit.h"
#include "connection_rows.h"
#include "core/selected.h"
#include "device/device.h"
#include "ip_rows.h"
#include "ipv4_rows.h"
#include "link_clock.h"
#include "route_rows.h"
#include "scenario/change.h"
#include "scenario/fleet.h"
#include "wake_ups.h"

#include <ipmib/platform_hooks.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace ipmib::simulated
{

class SimulatedPlatform final : private WakeUps::Sleeper
{
  public:
    SimulatedPlatform() = default;
    ~SimulatedPlatform() { wakeUps_->set(*this, std::nullopt); }
    SimulatedPlatform(const SimulatedPlatform &) = delete;
    SimulatedPlatform &operator=(const SimulatedPlatform &) = delete;

    // What the command line says, before the start. The answer, when it is wrong, is one line for the user.
    std::string takeArgument(const char *argument);
    std::string takeOption(const IpmibPlatformOption &option);
    // Reads the scenario. The answer, when that fails, is one line for the user.
    std::string start();

    // Another device of the file, by its name. The answer is as that of `start`.
    std::string startAnother(const std::string &name, SimulatedPlatform &another) const;
    bool findContext(std::size_t place, IpmibContext &context) const;
    const char *contextAddress(std::size_t place) const;
    std::uint64_t contextsChanged() const { return fleetVersion_; }
    std::string followContexts(const char *argument);
    bool findSystem(IpmibSystem &system) const;

    // For those who try a manager with it.
    void nextAnswer(IpmibAnswerFaults &faults);
    std::uint32_t reboots() const { return reboots_; }
    std::string change(const char *text, std::size_t length, int takesEffect);

    // What the time brings is seen by the next packet; for links that go up and down there is a clock beside it. The
    // first device's is that of all.
    int descriptor() const { return wakeUps_->descriptor(); }
    void dispatch() { wakeUps_->run(); }
    void beginPacket();
    // The scenario as it stands now; one that cannot be used is reported, and the device stays. The clock goes on.
    void reload();
    const char *interfaceName(std::uint32_t ifIndex) const;

    // For the agent's interface tables; false when there is no such interface.
    bool findInterface(std::uint32_t ifIndex, IpmibInterface &row) const
    {
        return describe(device_.find(ifIndex), row);
    }
    bool interfaceAfter(std::uint32_t ifIndex, IpmibInterface &row) const
    {
        return describe(device_.after(ifIndex), row);
    }
    bool traffic(std::uint32_t ifIndex, IpmibInterfaceTraffic &traffic) const;
    std::uint32_t interfaceCount() const;
    std::uint64_t interfacesChangedMs() const;

    // For the agent's IPv4 tables. Nobody has to follow what does not change by itself.
    std::string followIpv4() { return ""; }
    Ipv4Rows &ipv4() { return ipv4_; }
    IpRows &ip() { return ip_; }
    RouteRows &routes() { return routes_; }
    ConnectionRows &connections() { return connections_; }
    const Recorded &recorded() const { return device_.recorded; }
    void onLinkChange(IpmibLinkChanged changed, void *context) { linkClock_.listen(changed, context, now()); }
    // Times in rows are values of this, unless sysUpTime is somebody else's.
    void uptimeBegan(std::uint64_t monotonicMs);
    std::uint64_t uptimeMs()
    {
        bootWhenDue();
        return std::uint64_t{device_.uptimeS} * 1'000 + now();
    }

    const Device &device() const { return device_; }
    // Whether any of its services ever fails.
    bool hasFailures() const { return hasFailures_; }
    platform::RowHopLimit &rowHopLimit() { return rowHopLimit_; }

  private:
    void begin(Device device);
    void take(Device device);
    void bootWhenDue();
    void newTimes();
    // Since the start, and since the device has booted last, which is what all but its reboots go by.
    Time elapsed() const;
    Time now() const { return elapsed() - bootedAt_; }
    // When it was booted last, by its own account.
    Time lastBoot() const;
    bool describe(const Interface *interface, IpmibInterface &row) const;
    // A moment of the device on the monotonic clock, in milliseconds; 0 for its start and what was before the clock's.
    std::uint64_t onMonotonicClock(Time time) const;

    std::uint64_t startMs() const;
    void wakeUp() override;
    void wakeUpAt(std::optional<Time> time);

    std::string path_;
    std::shared_ptr<Fleet> fleet_ = std::make_shared<Fleet>(); // of the file; all its devices share it
    std::shared_ptr<WakeUps> wakeUps_ = std::make_shared<WakeUps>();
    std::string name_; // in the fleet; empty for the file's own device
    std::uint64_t fleetVersion_ = 1;
    std::optional<std::uint64_t> uptimeBeganMs_; // on the monotonic clock
    std::optional<Time> stopped_;                // the clock shows this for ever
    std::chrono::steady_clock::time_point start_;
    Time bootedAt_ = 0;
    std::uint32_t reboots_ = 0;
    Time rebootsFrom_ = 0; // by the last change that said so
    Time rebootsTo_ = 0;
    Device device_;
    Change originals_; // what has been changed since it booted, as it was before
    bool hasFailures_ = false;
    Ipv4Rows ipv4_{device_};
    IpRows ip_{device_};
    RouteRows routes_{device_};
    ConnectionRows connections_{device_};
    platform::RowHopLimit rowHopLimit_;
    LinkClock linkClock_{device_, [this](std::optional<Time> time) { wakeUpAt(time); }};
};

// The instance that the services answer for; null for none, and then every service fails.
inline SimulatedPlatform *running()
{
    return platform::selected<SimulatedPlatform>;
}
inline void setRunning(SimulatedPlatform *platform)
{
    platform::selected<SimulatedPlatform> = platform;
}

} // namespace ipmib::simulated
