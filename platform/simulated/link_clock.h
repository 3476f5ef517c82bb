// SPDX-License-Identifier: BSD-3-Clause
// Tells of links that go up and down when the scenario's schedules say so.
#pragma once

#include "device/device.h"

#include <ipmib/platform_hooks.h>

#include <functional>
#include <optional>
#include <utility>

namespace ipmib::simulated
{

class LinkClock
{
  public:
    // Says when `run` is to be called next.
    using WakeUpAt = std::function<void(std::optional<Time>)>;

    LinkClock(const Device &device, WakeUpAt wakeUpAt) : device_(device), wakeUpAt_(std::move(wakeUpAt)) {}
    LinkClock(const LinkClock &) = delete;
    LinkClock &operator=(const LinkClock &) = delete;

    void listen(IpmibLinkChanged changed, void *context, Time now);
    // What was before, of this device or of another one, is not told any more.
    void beginAt(Time now);
    // Tells what has changed until now, in its order.
    void run(Time now);
    // Operational states of all interfaces, in their order.
    using States = std::vector<std::uint32_t>;
    States states() const;
    // Tells what is not as it was, of the same interfaces.
    void tellChangesSince(const States &before) const;
    // It is to be woken at this moment, too.
    void wakeUpAt(std::optional<Time> moment) { alsoAt_ = moment; }
    void wakeUp(Time now);

  private:
    std::optional<Time> nextChange() const;
    void tellChangesAt(Time time) const;
    void tell(const Interface &interface, std::uint32_t before, std::uint32_t now) const;
    void setTimer(Time now);

    const Device &device_;
    WakeUpAt wakeUpAt_;
    IpmibLinkChanged changed_ = nullptr;
    void *context_ = nullptr;
    Time told_ = 0; // everything until then
    std::optional<Time> next_;
    std::optional<Time> alsoAt_;
};

} // namespace ipmib::simulated
