// SPDX-License-Identifier: BSD-3-Clause
// The moment at which a lifetime ends, in seconds since boot. The kernel tells what is left of it; kept as a moment it
// counts down by itself.
#pragma once

#include <compare>
#include <cstdint>
#include <limits>

namespace ipmib::platform
{

class Deadline
{
  public:
    static constexpr std::uint32_t infinite = 0xFFFFFFFF; // of lifetimes, in the kernel and in the MIB alike

    Deadline() = default; // long past
    static Deadline never() { return Deadline(infinite); }
    static Deadline after(std::uint32_t now, std::uint32_t seconds)
    {
        const std::uint64_t at = std::uint64_t{now} + seconds;
        return seconds == infinite ? never() : Deadline(at < latest ? static_cast<std::uint32_t>(at) : latest);
    }

    // What is left of the lifetime, in seconds.
    std::uint32_t left(std::uint32_t now) const { return at_ == infinite ? infinite : at_ > now ? at_ - now : 0; }
    bool isNever() const { return at_ == infinite; }

    friend auto operator<=>(const Deadline &, const Deadline &) = default;

  private:
    static constexpr std::uint32_t latest = infinite - 1;
    explicit Deadline(std::uint32_t at) : at_(at) {}

    std::uint32_t at_ = 0;
};

} // namespace ipmib::platform
