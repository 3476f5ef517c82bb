// SPDX-License-Identifier: BSD-3-Clause
// Which counter stands where in the kernel's binary array of IPv6 counters.
//
// The array carries no names, and its order is not stable: Linux 6.15 moved nine counters without changing the size.
// The text files name each counter but cost five times as much. So the two are compared, for as long as it takes until
// only one known order agrees with the names; should none agree, the names are used for good.
#pragma once

#include "counters/ip6_counters.h"

#include <bit>
#include <functional>
#include <optional>
#include <span>

namespace ipmib::platform
{

class CounterLayout
{
  public:
    using Array = std::span<const std::uint64_t>;

    // How to read the same counters again, while the order is not known yet.
    struct Source {
        // By name; nothing when they cannot be read.
        std::function<std::optional<Ip6Counters>()> named;
        // The array, once more after the names.
        std::function<std::optional<Array>()> again;
    };

    // The counters of one link from its array. Nothing when they cannot be told.
    std::optional<Ip6Counters> decode(Array array, const Source &source);

    // Whether one known order is left.
    bool settled() const { return std::has_single_bit(candidates_); }

  private:
    Ip6Counters tellApart(Array array, const Ip6Counters &named, Array later);

    unsigned candidates_ = 3; // one bit for each known order that has not been refuted; 0: only names will do
};

} // namespace ipmib::platform
