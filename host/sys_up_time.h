// SPDX-License-Identifier: BSD-3-Clause
// When sysUpTime was 0, for values that are moments of it. An agent tells it of itself, a sub-agent of its master;
// until then it is the machine's start.
#pragma once

#include "source.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>

namespace ipmib::host
{

class SysUpTime
{
  public:
    // Is told the moment of CLOCK_MONOTONIC, in milliseconds, whenever it becomes another one.
    using Listener = void (*)(std::uint64_t beganMs);

    explicit SysUpTime(Listener listener = nullptr) : listener_(listener) {}

    // What sysUpTime is at this moment, in hundredths of a second.
    void isNow(std::uint64_t ticks) { began(beginningOf(ticks)); }
    // It is no less than this, said by the same agent: what has been longer on its way says less.
    void isAtLeast(std::uint64_t ticks)
    {
        if (const std::int64_t earlier = beginningOf(ticks); earlier < beganMs_) {
            began(earlier);
        }
    }
    // As isNow, of a device with a clock of its own, which needs not be told.
    void isDevices(std::uint64_t milliseconds)
    {
        beganMs_ = nowMs() - static_cast<std::int64_t>(milliseconds);
        isOfDevice_ = true;
    }
    bool isOfDevice() const { return isOfDevice_; }
    // Values are moments of another device's clock, until it is the own one's turn again.
    void showOthers(std::uint64_t milliseconds) { othersMs_ = nowMs() - static_cast<std::int64_t>(milliseconds); }
    void showOwn() { othersMs_.reset(); }

    // How many times the listener has been told, and tells it once more: what listens may have changed.
    std::uint64_t version() const { return version_; }
    void tellAgain() const
    {
        if (version_ != 0 && listener_ != nullptr) {
            listener_(static_cast<std::uint64_t>(std::max<std::int64_t>(beganMs_, 0)));
        }
    }

    // sysUpTime at a moment of CLOCK_MONOTONIC in milliseconds; 0 for 0 and for what was before its start.
    Value at(std::uint64_t monotonicMs) const
    {
        const std::int64_t elapsedMs = static_cast<std::int64_t>(monotonicMs) - othersMs_.value_or(beganMs_);
        const bool isAfter = monotonicMs != 0 && elapsedMs > 0;
        return {
            ValueType::timeTicks, isAfter ? static_cast<std::uint64_t>(elapsedMs / msPerTick) & UINT32_MAX : 0, {}, {}};
    }

  private:
    static constexpr std::int64_t msPerTick = 10;

    static std::int64_t nowMs()
    {
        using namespace std::chrono;
        return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count(); // CLOCK_MONOTONIC
    }
    static std::int64_t beginningOf(std::uint64_t ticks)
    {
        return nowMs() - static_cast<std::int64_t>(ticks) * msPerTick;
    }
    void began(std::int64_t momentMs)
    {
        beganMs_ = momentMs;
        isOfDevice_ = false;
        ++version_;
        tellAgain();
    }

    Listener listener_;
    std::uint64_t version_ = 0;
    bool isOfDevice_ = false;
    std::optional<std::int64_t> othersMs_;
    std::int64_t beganMs_ = 0; // negative for one that has been up longer than this machine
};

} // namespace ipmib::host
