// SPDX-License-Identifier: BSD-3-Clause
// What some processes have spent.
#pragma once

#include <cstdint>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace ipmib::bench
{

// Processor time in nanoseconds, as the scheduler counts it.
class ProcessorTime
{
  public:
    explicit ProcessorTime(const std::string &pids)
    {
        std::istringstream parts(pids);
        for (std::string pid; std::getline(parts, pid, ',');) {
            files_.push_back("/proc/" + pid + "/schedstat");
        }
    }

    std::uint64_t now() const
    {
        std::uint64_t sum = 0;
        for (const std::string &name : files_) {
            std::ifstream file(name);
            std::uint64_t spent = 0;
            if (!(file >> spent)) {
                throw std::runtime_error("cannot read " + name);
            }
            sum += spent;
        }
        return sum;
    }

  private:
    std::vector<std::string> files_;
};

} // namespace ipmib::bench
