// SPDX-License-Identifier: BSD-3-Clause
// How fast a counter grows: evenly, or in a shape. What has been counted at a time follows from the time alone, however
// often or seldom anybody asks, and never falls.
#pragma once

#include "scenario/schedule.h"

#include <cstdint>
#include <memory>
#include <variant>
#include <vector>

namespace ipmib::simulated
{

// From one rate to another, and then on with that one.
struct Ramp {
    double from; // a second
    double to;
    Time at;
    Time length;

    std::uint64_t after(Time time) const;
};

// A wave around a mean rate: `mean + swing` at the time of the peak, `mean - swing` half a period later.
struct Wave {
    double mean; // a second
    double swing;
    Time period;
    Time peak;

    std::uint64_t after(Time time) const;
};

// Another rate in each step of time, between `mean - swing` and `mean + swing`.
struct Noise {
    std::uint64_t mean; // a step
    std::uint64_t swing;
    Time step;
    std::uint64_t seed;

    std::uint64_t after(Time time) const;

  private:
    std::uint64_t shiftAt(std::uint64_t number) const;
};

// A rate at some times, and none at others.
struct Burst {
    double rate; // a second
    Schedule times;

    std::uint64_t after(Time time) const;
};

class Growth
{
  public:
    Growth() = default;
    // Even, a second.
    explicit Growth(double rate) : rate_(rate) {}
    // A number, a shape, or a list of these, which add up.
    static Growth read(const Value &value);

    // Modulo 2^64.
    std::uint64_t after(Time time) const;

  private:
    using Shape = std::variant<Ramp, Wave, Noise, Burst>;

    double rate_ = 0;                                  // the even part, a second
    std::shared_ptr<const std::vector<Shape>> shapes_; // null for none
};

} // namespace ipmib::simulated
