// SPDX-License-Identifier: BSD-3-Clause
// The IPv6 addresses, prefixes and default routers of this network namespace, as services see them.
#pragma once

#include "addresses/address_table.h"
#include "addresses/anycast_table.h"
#include "addresses/prefix_table.h"
#include "core/mirror.h"
#include "counters/system_counters.h"
#include "routes/route_table.h"
#include "routes/router_list.h"

namespace ipmib::platform
{

class Addressing
{
  public:
    Addressing(DumpQueue &dumps, DumpQueue &routeDumps, Rtnetlink &requests, SystemCounters &counters)
        : dumps_(dumps), routeDumps_(routeDumps), requests_(requests), counters_(counters)
    {
    }

    // The answer, when it fails, is one line for the user.
    std::string start(PlatformLoop &loop, int receiveBuffer);

    // An interface went down or away: what routers have advertised there does not count any more.
    void linkDown(std::uint32_t ifIndex) { prefixes_.forgetAdvertised(ifIndex); }

    const AddressTable &addresses()
    {
        addressMirror_.readForPacket();
        return addresses_;
    }
    const AnycastTable &anycasts()
    {
        routeMirror_.readForPacket();
        return anycasts_;
    }
    const PrefixTable &prefixes()
    {
        addressMirror_.readForPacket();
        routeMirror_.readForPacket();
        prefixes_.settle();
        return prefixes_;
    }
    // Whether it looks as if a program formed the address that listens to routers in place of the kernel: it enters a
    // route to the prefix, too, and says of that where it comes from.
    bool programFormed(const Ip6Address &address);
    // Whether a router has joined it because it is one: the address of all routers of a prefix of its interface.
    bool isOfAllRouters(const Anycast &anycast);
    RouteFeed &routeFeed() { return routes_; }
    // With lifetimes of now: asks the kernel when an advertisement has come, at most every tenth of a second, only
    // while there are learned routers, and with the first question of a packet, so that all answers of a packet agree.
    const RouterList &refreshedRouters();
    void newPacket() { routersAsked_ = false; }
    // Whether what addresses, or routes, are made of is behind what was announced (Mirror::isBehind).
    bool addressesAreBehind() const { return addressMirror_.isBehind(); }
    bool routesAreBehind() const { return routeMirror_.isBehind(); }

    // For tests.
    Mirror &addressMirror() { return addressMirror_; }
    Mirror &anycastMirror() { return anycastMirror_; }
    Mirror &routeMirror() { return routeMirror_; }
    std::uint64_t kernelReads() const { return kernelReads_; }

  private:
    void connect();
    void applyAnycast(const PackedAddress &address, std::uint32_t ifIndex, bool joined);
    void listRouters();
    bool advertisementCame();

    DumpQueue &dumps_;
    DumpQueue &routeDumps_;
    Rtnetlink &requests_;
    SystemCounters &counters_;
    AddressTable addresses_;
    AnycastTable anycasts_;
    RouteTable routes_;
    PrefixTable prefixes_{anycasts_, routes_};
    RouterList routers_;
    bool routersChanged_ = false; // since they were listed
    bool routersAsked_ = false;   // since the packet began
    Mirror addressMirror_{addresses_, dumps_};
    Mirror anycastMirror_{anycasts_, dumps_};
    Mirror routeMirror_{routes_, routeDumps_};
    std::uint64_t nextReadMs_ = 0;                // since boot
    std::optional<std::uint64_t> advertisements_; // that had been counted before the last reading
    bool readOnceMore_ = false;
    std::uint64_t kernelReads_ = 0;
};

} // namespace ipmib::platform
