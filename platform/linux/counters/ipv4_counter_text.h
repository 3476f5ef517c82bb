// SPDX-License-Identifier: BSD-3-Clause
// The text in which the kernel tells its counters of IPv4, ICMP, TCP and UDP: /proc/net/snmp and /proc/net/netstat.
#pragma once

#include <ipmib/platform_ip.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ipmib::platform
{

// Text in which a line of names stands before each line of numbers, and both begin with the name of a group:
// "Ip: Forwarding DefaultTTL ..." and "Ip: 1 64 ...". Which number is wanted is found out by the names once, and again
// whenever the line of names is another one.
class Ipv4CounterText
{
  public:
    // Where a number goes. Those of ipSystemStatsTable go where the hooks have them, the others behind.
    enum Slot : std::uint16_t {
        ipSlots = 0,
        icmpInMsgs = IPMIB_IP_COUNTERS,
        icmpInErrors,
        icmpOutMsgs,
        icmpOutErrors,
        tcpRtoAlgorithm,
        tcpRtoMin,
        tcpRtoMax,
        tcpMaxConn,
        tcpActiveOpens,
        tcpPassiveOpens,
        tcpAttemptFails,
        tcpEstabResets,
        tcpCurrEstab,
        tcpInSegs,
        tcpOutSegs,
        tcpRetransSegs,
        tcpInErrs,
        tcpOutRsts,
        udpInDatagrams,
        udpNoPorts,
        udpInErrors,
        udpOutDatagrams,
        namedSlots,
        icmpInType = namedSlots, // and 255 behind it
        icmpOutType = icmpInType + 256,
        slots = icmpOutType + 256,
    };

    struct Values {
        std::array<std::uint64_t, slots> value; // of a negative number its two's complement
        std::array<bool, slots> there;

        bool operator==(const Values &) const = default;
    };

    // Everything that the text says; what it does not say is not there.
    void parse(std::string_view text, Values &values);

  private:
    struct Group {
        std::string names;                  // the whole line
        std::vector<std::uint16_t> columns; // a slot, or `slots` for a number that nobody wants
        bool wanted = false;
    };
    static void readNames(std::string_view line, Group &group);

    std::vector<Group> groups_; // in the order of the text
};

} // namespace ipmib::platform
