// SPDX-License-Identifier: BSD-3-Clause
// The Linux platform keeps its promises: on this machine as it is, and on a router that has a bit of everything.
#include "netns/namespace.h"
#include "portcheck.h"

#include <gtest/gtest.h>

namespace
{

using ipmib::netns::Inside;
using ipmib::netns::Namespace;

ipmib::portcheck::Report checkLinux()
{
    ipmib::portcheck::Options options;
    options.plugin.platform = IPMIB_PLATFORM;
    options.plugin.module = IPMIB_MODULE;
    return ipmib::portcheck::checkPlatform(options);
}

TEST(PortcheckOfLinux, passesOnThisMachine)
{
    const auto report = checkLinux();
    EXPECT_TRUE(report.broken.empty()) << report.text();
}

TEST(PortcheckOfLinux, passesOnARouter)
{
    IPMIB_NEEDS_NAMESPACES();
    const Namespace router;
    const Namespace other;
    Namespace::connect(router, "lan", other, "lan");
    Namespace::connect(router, "wan", other, "wan");
    router.run("ip link add narrow mtu 1000 type veth peer name narrow2 && ip link set narrow up"); // no IPv6
    router.run("ip link add quiet type veth peer name quiet2");                                     // down
    router.run("ip -6 addr add 2001:db8:1::1/64 dev lan && ip -6 addr add 2001:db8:1::2/128 dev lan && "
               "ip -6 addr add 2001:db8:2::1/48 dev wan && ip -6 addr add fd00::1/127 dev wan && "
               "ip -6 addr add 2001:db8:3::1 peer 2001:db8:3::2/64 dev wan && ip -6 addr add fec0::1/10 dev lan");
    router.run("for i in 1 2 9 a ff; do ip -6 neigh add 2001:db8:1::$i lladdr 02:00:00:00:00:$i dev lan nud permanent; "
               "ip -6 neigh add fe80::$i lladdr 02:00:00:00:00:$i dev lan nud permanent; "
               "ip -6 neigh add fe80::$i lladdr 02:00:00:00:00:$i dev wan nud permanent; done");
    router.run("ip -6 route add default metric 1 nexthop via 2001:db8:1::9 dev lan nexthop via fe80::9 dev wan && "
               "ip -6 route add default via fe80::9 dev lan metric 2 && ip -6 route add 2001:db8:77::/48 dev lan && "
               "ip -6 route add blackhole 2001:db8:78::/48");
    const Inside inside(router);
    const auto report = checkLinux();
    EXPECT_TRUE(report.broken.empty()) << report.text();
    EXPECT_NE(report.text().find("default routers: 3"), std::string::npos) << report.text();
    EXPECT_NE(report.text().find("neighbours: 15"), std::string::npos) << report.text();
}

} // namespace
