// SPDX-License-Identifier: BSD-3-Clause
// Neighbours as the kernel tells them: what a message says, and single entries when they are asked for.
#pragma once

#include "core/rtnetlink.h"
#include "neighbour_rows.h"

#include <libmnl/libmnl.h>

#include <cstdint>
#include <optional>

namespace ipmib::platform
{

enum class NeighbourNews { ignored, present, gone };

// Bytes of an address of AF_INET6 or AF_INET.
std::size_t addressSize(std::uint8_t family);

// What a message says of neighbours in the family AF_INET6 or AF_INET. `ignored` is about something that is no such
// neighbour of ours; `gone` leaves only the key.
NeighbourNews readNeighbour(const nlmsghdr &message, std::uint8_t family, std::uint64_t nowMs, Neighbour &neighbour);

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
