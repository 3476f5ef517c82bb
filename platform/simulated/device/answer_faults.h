// SPDX-License-Identifier: BSD-3-Clause
// What goes wrong with the answers of a device, by the will of its scenario.
#pragma once

#include "scenario/schedule.h"

#include <ipmib/platform_hooks.h>

#include <cstdint>
#include <vector>

namespace ipmib::simulated
{

class AnswerFaults
{
  public:
    // {"silence": {"probability": 0.1, "seed": 3, "times": [...]}, "delay": {"seconds": 2}, "genErr": true}
    static AnswerFaults read(const Value &value);
    // What the value says from now on; what it does not name stays. True switches a fault on as it was described last,
    // false switches it off.
    AnswerFaults changed(const Value &value, Time now) const;

    bool empty() const { return faults_.empty(); }
    // Of the answer that is sent now. Each call stands for an answer: probabilities are of those.
    IpmibAnswerFaults next(Time now);

  private:
    struct Fault {
        std::uint32_t kind = 0; // IPMIB_FAULT_x
        bool isOn = true;
        double probability = 1;
        std::uint64_t seed = 0;
        Schedule times = Schedule::always();
        std::uint32_t detail = 0;  // milliseconds, or octets
        std::uint64_t answers = 0; // that it has been asked for
    };

    std::vector<Fault> faults_; // a handful
};

} // namespace ipmib::simulated
