// SPDX-License-Identifier: BSD-3-Clause
// What some processes have spent.
#pragma once

#include <sys/types.h>
#include <time.h>

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace ipmib::bench
{

// Processor time in nanoseconds, up to this moment also of one that runs.
class ProcessorTime
{
  public:
    explicit ProcessorTime(const std::string &pids)
    {
        std::istringstream parts(pids);
        for (std::string pid; std::getline(parts, pid, ',');) {
            clockid_t clock{};
            if (clock_getcpuclockid(static_cast<pid_t>(std::stol(pid)), &clock) != 0) {
                throw std::runtime_error("there is no process " + pid);
            }
            clocks_.push_back(clock);
        }
    }

    std::uint64_t now() const
    {
        std::uint64_t sum = 0;
        for (const clockid_t clock : clocks_) {
            timespec spent{};
            if (clock_gettime(clock, &spent) != 0) {
                throw std::runtime_error("a process that is measured has ended");
            }
            sum += static_cast<std::uint64_t>(spent.tv_sec) * 1'000'000'000 + static_cast<std::uint64_t>(spent.tv_nsec);
        }
        return sum;
    }

  private:
    std::vector<clockid_t> clocks_;
};

} // namespace ipmib::bench
