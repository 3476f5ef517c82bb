// SPDX-License-Identifier: BSD-3-Clause
// What is changed of a device while it runs: a part of a scenario, whose times count from the change.
#pragma once

#include "device/device.h"
#include "scenario/value.h"

#include <optional>
#include <vector>

namespace ipmib::simulated
{

class Change
{
  public:
    // Of the device as it is now, which stays as it is; `elapsed` is the clock of its faults. Throws ScenarioError.
    static Change read(const Value &value, const Device &device, Time elapsed);

    // To the device that it was read for, at the same moment.
    void applyTo(Device &device) const;
    // Before that: puts what it will replace, but for the faults, into `originals`, unless something is there already.
    void keepOriginals(const Device &device, Change &originals) const;

    // How long the device is away while it boots again; nothing when it does not.
    std::optional<Time> reboot() const { return reboot_; }

  private:
    std::vector<Interface> interfaces_; // as they shall be
    std::optional<CounterSet<IpmibIpCounters>> systemIp6Counters_;
    std::optional<CounterSet<IpmibIpCounters>> systemIp4Counters_;
    std::optional<CounterSet<IpmibTcpCounters>> tcpCounters_;
    std::optional<CounterSet<IpmibUdpCounters>> udpCounters_;
    std::optional<AnswerFaults> faults_;
    std::optional<Time> reboot_;
};

} // namespace ipmib::simulated
