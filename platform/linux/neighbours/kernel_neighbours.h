// SPDX-License-Identifier: BSD-3-Clause
// Single questions about the kernel's neighbour cache.
#pragma once

#include "core/rtnetlink.h"
#include "neighbours/neighbour.h"

#include <optional>

namespace ipmib::platform
{

// How many entries the kernel has made and destroyed since boot, in all network namespaces.
struct NeighbourEntryCounts {
    std::uint64_t made = 0;
    std::uint64_t destroyed = 0;
    std::uint64_t rehashes = 0;
};

class KernelNeighbours
{
  public:
    explicit KernelNeighbours(std::uint8_t family) : family_(family) {}

    // AF_INET6 or AF_INET.
    std::uint8_t family() const { return family_; }
    bool open() { return socket_.open(); }
    const std::string &error() const { return socket_.error(); }

    // `gone` when there is no such neighbour, `ignored` when the kernel does not answer.
    NeighbourNews ask(const NeighbourKey &key, Neighbour &neighbour);
    // For tests: how often it was asked for one.
    unsigned questions() const { return questions_; }
    // Nothing when the kernel does not tell.
    std::optional<NeighbourEntryCounts> counts();

  private:
    std::uint8_t family_;
    Rtnetlink socket_;
    unsigned questions_ = 0;
};

} // namespace ipmib::platform
