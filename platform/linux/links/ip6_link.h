// SPDX-License-Identifier: BSD-3-Clause
// What the kernel says of IPv6 on one link at this moment: counters, timers, settings. Read once for a packet of
// requests, however many of its values are asked for; several links at once when a walk asks for them.
#pragma once

#include "core/packet_readings.h"
#include "core/rtnetlink.h"
#include "counters/counter_layout.h"
#include "links/ip6_link_dump.h"
#include "links/link_table.h"

#include <net/if.h>

#include <array>

namespace ipmib::platform
{

struct Ip6Link {
    // False: the kernel runs no IPv6 on this link, whose MTU is below 1280 (or it has no IPv6 at all).
    bool present = false;
    Ip6Counters counters;
    std::uint32_t reachableMs = 0;
    std::uint32_t retransmitMs = 0;
    std::uint32_t mtu = 0;
    std::array<std::uint8_t, 16> token{};
};

// An RTM_NEWLINK message with its IPv6 attributes, whether it is of a link or of IPv6 on it; the counters are still in
// the kernel's array.
struct Ip6LinkMessage {
    explicit Ip6LinkMessage(const nlmsghdr &message);
    CounterLayout::Array array() const { return {elements.data(), elementCount}; }

    Ip6Link link;
    std::array<std::uint64_t, 64> elements{};
    std::size_t elementCount = 0;
    std::uint32_t ifIndex = 0;
    char name[IFNAMSIZ]{};
};

class Ip6LinkReader
{
  public:
    // The socket is the caller's, and open before the first reading.
    explicit Ip6LinkReader(Rtnetlink &socket) : socket_(socket) {}

    // Forgets what the packet before has read.
    void newPacket();
    // A link that has gone for good.
    void forget(std::uint32_t ifIndex) { readings_.forget(ifIndex); }

    // Null when the kernel has no such link. One that vanishes while a packet still counts on it keeps what was last
    // read.
    const Ip6Link *read(std::uint32_t ifIndex);

    // Answers of the kernel since the start; a benchmark compares it with rows.
    std::uint64_t kernelReads() const { return kernelReads_; }
    // Whether the kernel's own order of counters is known by now, so that a reading needs no second source.
    bool layoutSettled() const { return layout_.settled(); }

  private:
    std::optional<Ip6LinkMessage> ask(std::uint32_t ifIndex);
    bool paysToReadOn(std::uint32_t ifIndex) const;
    void readOnTo(std::uint32_t ifIndex);
    void take(const Ip6LinkMessage &answer, std::uint32_t ifIndex, Ip6Link &link);
    std::optional<Ip6Counters> countersOf(const Ip6LinkMessage &message, std::uint32_t ifIndex);

    Rtnetlink &socket_;
    CounterLayout layout_;
    PacketReadings<std::uint32_t, Ip6Link> readings_;
    Ip6LinkDump dump_;
    std::uint32_t readFrom_ = 0; // the first link that this packet asked the dump for
    unsigned credit_ = 0;        // links that the dump may still be read on
    unsigned wanted_ = 0;        // links, in this packet
    unsigned wantedBefore_ = 0;  // in the one before
    std::uint64_t kernelReads_ = 0;
};

using InterfaceIdentifier = std::array<std::uint8_t, 8>;

// From the token that the administrator set, else from the link-local address (16 bytes, null when there is none), else
// from the link-layer address. All zero for a link that has none of them yet.
InterfaceIdentifier interfaceIdentifier(const Link &link, const Ip6Link &ip6, const std::uint8_t *linkLocal);

} // namespace ipmib::platform
