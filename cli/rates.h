// SPDX-License-Identifier: BSD-3-Clause
// How fast counters grow between two looks at them.
#pragma once

#include "cell.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ipmib::cli
{

// What a counter has grown by; nothing when it has begun anew. One of 32 bits is taken to have wrapped at most once.
std::optional<std::uint64_t> growth(const CounterValue &before, const CounterValue &now);

class Rates
{
  public:
    // The rows with a rate in the place of each counter: nothing for one that was not there at the look before. The
    // other cells of a row tell which one it is.
    std::vector<Row> update(std::vector<Row> rows, double seconds);

  private:
    std::map<std::string, Row> before_;
};

} // namespace ipmib::cli
