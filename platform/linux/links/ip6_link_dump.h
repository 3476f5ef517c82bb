// SPDX-License-Identifier: BSD-3-Clause
// IPv6 of the links in the order of their numbers, each piece as the kernel knows it at the moment it is read: a dump
// that rests between the packets of a walk.
#pragma once

#include "core/rtnetlink.h"

#include <cstdint>
#include <limits>

namespace ipmib::platform
{

class Ip6LinkDump
{
  public:
    // Reads the next few links and hands their messages on, or the first few where the dump has ended. False when the
    // kernel does not answer like that (older ones do not keep to the order), and then never again.
    bool readOn(const Rtnetlink::Handler &handler);

    bool isUsable() const { return usable_; }
    // The last link that was handed on; beyond all of them at the end, and before the first call.
    std::uint32_t reached() const { return reached_; }
    // Whether what was handed on last, or is just now, are the first links.
    bool isAtFirst() const { return first_; }
    // Whether the link would have been handed on last. Where that was all there are, the next call does so again.
    bool isAt(std::uint32_t ifIndex) const
    {
        return ifIndex > before_ && ifIndex <= reached_ && !(first_ && reached_ == end);
    }

  private:
    static constexpr std::uint32_t end = std::numeric_limits<std::uint32_t>::max();

    bool begin();
    bool giveUp();

    Rtnetlink socket_;
    bool usable_ = true;
    bool first_ = false;
    std::uint32_t before_ = end; // what was reached before that
    std::uint32_t reached_ = end;
};

} // namespace ipmib::platform
