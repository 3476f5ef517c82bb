// SPDX-License-Identifier: BSD-3-Clause
// The text in which the kernel tells its IPv6 counters: /proc/net/snmp6, and /proc/net/dev_snmp6/INTERFACE.
#pragma once

#include "counters/ip6_counters.h"

#include <bitset>
#include <string>
#include <vector>

namespace ipmib::platform
{

struct Icmp6Counters {
    std::uint64_t inMsgs = 0;
    std::uint64_t inErrors = 0;
    std::uint64_t outMsgs = 0;
    std::uint64_t outErrors = 0;
    std::array<std::uint64_t, 256> inType{};
    std::array<std::uint64_t, 256> outType{};
    std::bitset<256> listed; // types that the kernel lists: it has seen one, in or out

    bool operator==(const Icmp6Counters &) const = default;
};

struct Udp6Counters {
    std::uint64_t inDatagrams = 0;
    std::uint64_t noPorts = 0;
    std::uint64_t inErrors = 0;
    std::uint64_t outDatagrams = 0;

    bool operator==(const Udp6Counters &) const = default;
};

struct Snmp6Counters {
    Ip6Counters ip6;
    Icmp6Counters icmp6;
    Udp6Counters udp6;

    bool operator==(const Snmp6Counters &) const = default;
};

// A name and a number on each line. Lines that mean nothing to us are passed over. The text is mostly the same but for
// its numbers: whoever reads it again knows the lines by their place, and stops behind those that may count. These
// become more: a message type has a line once it was counted.
class Snmp6Text
{
  public:
    void parse(std::string_view text, Snmp6Counters &counters);

  private:
    // What a line's number is.
    struct Meaning {
        enum class Of : std::uint8_t { elsewhere, nothing, ip6, icmp6InType, icmp6OutType, named };
        Of of = Of::elsewhere;  // of a protocol that does not count
        std::uint8_t which = 0; // Ip6Counter, message type, or place in the list of names
    };
    struct Line {
        std::string head; // up to the number
        Meaning meaning;
    };

    static Meaning meaningOf(std::string_view name);
    static Line lineOf(std::string_view text);
    static bool begins(std::string_view text, const Line &line);
    static void takeNumber(std::string_view &text, Meaning meaning, Snmp6Counters &counters);
    static void set(Meaning meaning, std::uint64_t value, Snmp6Counters &counters);

    std::vector<Line> lines_; // of the last text, to the first one behind all that may count
};

inline void parseSnmp6(std::string_view text, Snmp6Counters &counters)
{
    Snmp6Text().parse(text, counters);
}

} // namespace ipmib::platform
