// SPDX-License-Identifier: BSD-3-Clause
// What the checking process is doing, in memory that its supervisor shares.
#pragma once

#include <atomic>
#include <cstdint>
#include <string_view>

namespace ipmib::portcheck
{

class Watch
{
  public:
    // Says what is called next; a step that takes too long is reported in these words.
    void step(std::string_view doing)
    {
        const std::size_t length = doing.copy(doing_, sizeof doing_ - 1);
        doing_[length] = '\0';
        ++steps_;
    }

    std::uint32_t steps() const { return steps_; }
    const char *doing() const { return doing_; }

  private:
    std::atomic<std::uint32_t> steps_ = 0; // as wide as every machine counts without a lock
    char doing_[160] = {};
};

} // namespace ipmib::portcheck
