// SPDX-License-Identifier: BSD-3-Clause
// The Linux platform in one network namespace: every mirror, reader and timer, from start to stop.
#pragma once

#include "accounting/ipv4_accounting.h"
#include "addressing.h"
#include "advertisements/radvd_file.h"
#include "advertisements/row_hop_limit.h"
#include "connections/connections.h"
#include "core/dump_queue.h"
#include "core/platform_loop.h"
#include "core/proc_file.h"
#include "core/selected.h"
#include "core/uptime.h"
#include "counters/system_counters.h"
#include "ipv4.h"
#include "links/ip6_link.h"
#include "links/link_speed.h"
#include "links/link_table.h"
#include "links/link_traffic.h"
#include "namespaces/named_namespaces.h"
#include "namespaces/network_namespace.h"
#include "neighbours/neighbours.h"
#include "routes/routes.h"
#include "rows/ip_rows.h"

#include <ipmib/platform_hooks.h>

#include <sys/socket.h>

#include <string>

namespace ipmib::platform
{

struct Settings {
    // Bytes for waiting announcements, for each mirror; tests make it tiny.
    int receiveBuffer = Mirror::defaultReceiveBuffer;
    std::string radvdConf = "/etc/radvd.conf";
    std::string routeTables = {}; // as the option has it; empty: as without it
    bool routerAnycast = false;   // lists the addresses of all routers that this node has joined as a router
    bool ipv4Accounting = false;  // counts IPv4 traffic by interface, with a table in the packet filter
};

class LinuxPlatform
{
  public:
    LinuxPlatform() = default;
    ~LinuxPlatform();
    LinuxPlatform(const LinuxPlatform &) = delete;
    LinuxPlatform &operator=(const LinuxPlatform &) = delete;

    // What the command line says, before the start. The answer, when it is wrong, is one line for the user.
    std::string takeArgument(const char *argument);
    std::string takeOption(const IpmibPlatformOption &option);

    // Fills every mirror. The answer, when that fails, is one line for the user.
    std::string start() { return start(settings_); }
    std::string start(const Settings &settings);

    // Another network namespace, "netns NAME|PATH|PID". The answer is as that of `start`.
    std::string startAnother(const std::string &argument, LinuxPlatform &another);
    // Those with a name, once they are followed ("netns all", or "all").
    bool findContext(std::size_t place, IpmibContext &context) const;
    std::uint64_t contextsChanged() const { return namespaces_.version(); }
    std::string followContexts(const char *argument);
    // Of a namespace that is not the process's own, which has its agent's.
    bool findSystem(IpmibSystem &system) const;
    // Descriptors are opened in its namespace from now on.
    void wasSelected() const { NetworkNamespace::choose(ownNamespace()); }

    int descriptor() const { return loop_.descriptor(); }
    void dispatch();
    void beginPacket();
    // Whether what these rows (IPMIB_FOLLOW_x) are made of is what had been announced when the packet began: else what
    // is left is applied between packets, or when somebody asks all the same.
    std::uint32_t areCurrent(std::uint32_t rows) const;
    void reload();
    const char *interfaceName(std::uint32_t ifIndex) const;

    // For the agent's interface tables; false when there is no such interface.
    bool findInterface(std::uint32_t ifIndex, IpmibInterface &interface);
    bool interfaceAfter(std::uint32_t ifIndex, IpmibInterface &interface);
    bool traffic(std::uint32_t ifIndex, IpmibInterfaceTraffic &traffic);
    std::uint32_t interfaceCount() const { return static_cast<std::uint32_t>(links_.size()); }
    std::uint64_t interfacesChangedMs() const { return links_.rowsChangedMs(); }

    // For notifications of links that go up and down.
    void onLinkChange(IpmibLinkChanged changed, void *context);

    // sysUpTime was 0 then.
    void uptimeBegan(std::uint64_t monotonicMs)
    {
        uptime_.began(monotonicMs);
        ++uptimesBegun_;
    }
    const Uptime &uptime() const { return uptime_; }

    // For the agent's IPv4 tables, once IPMIB_FOLLOW_x are followed. The answer, when that fails, is one line for the
    // user.
    std::string followIpv4() { return followRows(IPMIB_FOLLOW_ADDRESSES | IPMIB_FOLLOW_NEIGHBOURS); }
    std::string followRows(std::uint32_t rows) { return ipv4_.follow(rows, loop_, receiveBuffer_); }
    std::string followRoutes() { return ipv4_.followRoutes(loop_, receiveBuffer_); }
    PlatformLoop &loop() { return loop_; }
    Ipv4 &ipv4() { return ipv4_; }
    // For tables outside the module.
    IpRows &ip() { return ip_; }
    Routes &routes() { return routes_; }
    Connections &connections() { return connections_; }

    // For what is asked of the kernel within a request.
    Rtnetlink &requests() { return requests_; }

    // Seconds since boot, the same for all requests of a packet.
    std::uint32_t now() const { return now_; }

    const LinkTable &links() const { return links_; }
    // Differs after each change of what is known of interfaces, their link-local addresses and when those were made.
    std::uint64_t linkLocalVersion()
    {
        return links_.version() + addressing_.addresses().linkLocalVersion() + uptimesBegun_;
    }
    Ip6LinkReader &ip6Links() { return ip6Links_; }
    SystemCounters &systemCounters() { return systemCounters_; }
    Ipv4Counters &ipv4Counters() { return ipv4Counters_; }
    Ipv4Accounting &ipv4Accounting() { return ipv4Accounting_; }
    // What the kernel says of IPv6 on a link; null when it runs none there.
    const Ip6Link *ip6Link(std::uint32_t ifIndex);
    Addressing &addressing() { return addressing_; }
    // Whether an anycast address is a row: one that the kernel has joined for a router is only where that was asked
    // for.
    bool shows(const Anycast &anycast) { return routerAnycast_ || !addressing_.isOfAllRouters(anycast); }
    Neighbours &neighbours() { return neighbours_; }
    const RadvdFile &radvd() const { return radvd_; }
    RowHopLimit &rowHopLimit() { return rowHopLimit_; }
    // The hop limit that interfaces start with.
    std::uint32_t hopLimit();

    // For tests.
    Mirror &linkMirror() { return linkMirror_; }
    DumpQueue &dumps() { return dumps_; }
    DumpQueue &routeDumps() { return routeDumps_; }

  private:
    const NetworkNamespace *ownNamespace() const { return namespace_.isOpen() ? &namespace_ : nullptr; }
    bool describe(const Link *link, IpmibInterface &interface);
    void forgetLink(std::uint32_t ifIndex);

    NetworkNamespace namespace_;     // not open: the process's own
    std::string name_;               // of that namespace
    PlatformLoop *parent_ = nullptr; // the first instance's, in which this one's loop hangs

    // In the order in which they depend on each other: the loop outlives what it watches.
    PlatformLoop loop_;
    NamespaceHelper helper_{loop_}; // of the first instance
    DumpQueue dumps_;
    DumpQueue routeDumps_; // of their own: other tables need not wait for a million routes
    LinkTable links_;
    Mirror linkMirror_{links_, dumps_};
    Rtnetlink requests_;
    SystemCounters systemCounters_;
    Addressing addressing_{dumps_, routeDumps_, requests_, systemCounters_};
    Neighbours neighbours_{dumps_, AF_INET6};
    Ipv4 ipv4_{dumps_, routeDumps_};
    Ip6LinkReader ip6Links_{requests_};
    LinkTrafficReader linkTraffic_{requests_};
    LinkSpeeds linkSpeeds_{requests_};
    Ipv4Counters ipv4Counters_;
    ProcFile hopLimitFile_{"/proc/sys/net/ipv6/conf/default/hop_limit"};
    Ipv4Accounting ipv4Accounting_;
    RadvdFile radvd_;
    RowHopLimit rowHopLimit_;
    IpRows ip_{*this};
    Routes routes_{*this};
    Connections connections_{loop_};
    NamedNamespaces namespaces_;
    Settings settings_;
    int receiveBuffer_ = Mirror::defaultReceiveBuffer;
    Uptime uptime_;
    std::uint64_t uptimesBegun_ = 0;
    bool routerAnycast_ = false;
    std::uint32_t now_ = 0;
};

// The instance that the services answer for; null for none, and then every service fails.
inline LinuxPlatform *running()
{
    return selected<LinuxPlatform>;
}
inline void setRunning(LinuxPlatform *platform)
{
    selected<LinuxPlatform> = platform;
}

} // namespace ipmib::platform
