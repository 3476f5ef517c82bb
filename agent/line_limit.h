// SPDX-License-Identifier: BSD-3-Clause
// Which lines of a log are written where somebody else decides how many there would be.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ipmib::agent
{

// Lines are of one kind when they differ in numbers alone: addresses, ports, identifiers, lengths. In a minute a few of
// one kind are written, and not many of all kinds together, for whoever asks may have chosen the words.
class LineLimit
{
  public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::chrono::seconds period{60};
    static constexpr unsigned mostOfOneKind = 5;
    static constexpr unsigned mostOfAllKinds = 100;

    // Whether the line is to be written. It counts as written then.
    bool admits(std::string_view line, Clock::time_point now);

    // Whether lines have been left out that no report has told of.
    bool hasLeftOut() const { return leftOut_ != 0; }
    // Once a minute is over: a line for each kind of which some were left out, without newline.
    std::vector<std::string> takeReport(Clock::time_point now);

  private:
    struct Kind {
        unsigned written = 0;
        unsigned long leftOut = 0;
    };

    std::optional<Clock::time_point> begin_; // of the minute: its first line
    std::map<std::string, Kind, std::less<>> kinds_;
    unsigned written_ = 0;
    unsigned long leftOut_ = 0;
};

} // namespace ipmib::agent
