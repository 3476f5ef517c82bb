// SPDX-License-Identifier: BSD-3-Clause
// Where SNMP messages end on a stream.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ipmib::agent
{

class MessageBoundary
{
  public:
    // The longest beginning that tells how long a message is, in octets.
    static constexpr std::size_t headerSize = 6;

    // How many octets may be taken from the stream without going beyond the message. `next`: what is next on the
    // stream, up to `headerSize` octets and at least one. 0 when no message of at most `longest` octets goes on so.
    std::size_t mayTake(std::span<const std::uint8_t> next, std::size_t longest) const;
    // Whether that is known without looking at the stream.
    bool isInside() const { return remaining_ != 0; }
    // These octets, no more of them than it may, have been taken. Returns whether the message ends with them.
    bool take(std::span<const std::uint8_t> octets);

  private:
    std::array<std::uint8_t, headerSize> header_{};
    std::size_t known_ = 0;     // octets of the header, and of the message
    std::size_t remaining_ = 0; // octets of the message; 0 while its length is unknown
};

} // namespace ipmib::agent
