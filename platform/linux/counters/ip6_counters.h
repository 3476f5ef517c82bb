// SPDX-License-Identifier: BSD-3-Clause
// The kernel's IPv6 counters, of the system and of one link alike, and how they become the counters of the contract.
#pragma once

#include <ipmib/platform_ip.h>
#include <ipmib/records.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ipmib::platform
{

// Those that the contract asks for, in the order of the kernel's text files.
enum class Ip6Counter : std::uint8_t {
    inReceives,
    inHdrErrors,
    inTooBigErrors,
    inNoRoutes,
    inAddrErrors,
    inUnknownProtos,
    inTruncatedPkts,
    inDiscards,
    inDelivers,
    outForwDatagrams,
    outRequests,
    outDiscards,
    outNoRoutes,
    reasmReqds,
    reasmOKs,
    reasmFails,
    fragOKs,
    fragFails,
    fragCreates,
    inMcastPkts,
    outMcastPkts,
    inOctets,
    outOctets,
    inMcastOctets,
    outMcastOctets,
    outTransmits, // since Linux 6.7
    ignored,      // any other
};
constexpr std::size_t ip6CounterCount = static_cast<std::size_t>(Ip6Counter::ignored);

class Ip6Counters
{
  public:
    std::uint64_t operator[](Ip6Counter which) const { return values_[static_cast<std::size_t>(which)]; }
    // Sets one, and notes that the kernel counts it. Ignores what is to be ignored.
    void set(Ip6Counter which, std::uint64_t value)
    {
        values_[static_cast<std::size_t>(which)] = value;
        counted_ |= 1u << static_cast<unsigned>(which);
    }
    bool counted(Ip6Counter which) const { return (counted_ >> static_cast<unsigned>(which) & 1) != 0; }
    bool operator==(const Ip6Counters &) const = default;

  private:
    std::array<std::uint64_t, ip6CounterCount + 1> values_{};
    std::uint32_t counted_ = 0;
};

// The counter that text files call by this name behind "Ip6".
Ip6Counter ip6CounterByName(std::string_view name);

void fillIp6MibStat(const Ip6Counters &counters, Ip6MibStat &stat);
// The same for tables outside the module, which also tell what the kernel does not count.
void fillIpCounters(const Ip6Counters &counters, IpmibIpCounters &columns);

} // namespace ipmib::platform
