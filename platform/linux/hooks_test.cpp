// SPDX-License-Identifier: BSD-3-Clause
// The platform's life as a host sees it: options, start and stop, services before and after.
#include <ipmib/platform.h>
#include <ipmib/platform_hooks.h>

#include <gtest/gtest.h>

#include <dirent.h>

#include <string>
#include <vector>

extern "C" const IpmibPlatformHooks ipmib_platform_hooks;

namespace
{

const IpmibPlatformHooks &hooks = ipmib_platform_hooks;

struct Start {
    int result;
    std::string error;
};

Start start(const char *argument, const std::vector<IpmibPlatformOption> &options)
{
    const IpmibPlatformHost host{[](int, const char *) {}, argument, options.data(), options.size()};
    char error[200] = "";
    const int result = hooks.start(&host, error, sizeof error);
    return {result, error};
}

std::size_t openDescriptors()
{
    std::size_t count = 0;
    DIR *directory = opendir("/proc/self/fd");
    while (readdir(directory) != nullptr) {
        ++count;
    }
    closedir(directory);
    return count;
}

TEST(Hooks, servicesFailUntilTheStartAndAfterTheStop)
{
    const auto expectDead = [] {
        Ip6MibStat stat;
        Icmp6MibStat icmp;
        IpMibIfStat ipv4;
        NdIfConfigInfo info;
        NeighbourEntry neighbour{};
        FullPrefixRecord prefix{};
        FullAddressRecord address{};
        GatewayRecord gateway;
        GatewayKey key{};
        LinkLocalBuffer buffer;
        IfSelection selection;
        std::uint8_t bytes[16] = {};
        std::uint32_t mtu;
        EXPECT_NE(IP6_DaemonCheck(1), 0u);
        EXPECT_NE(IP_DaemonCheck(1), 0u);
        EXPECT_EQ(IF_IteratorInitialize(), 0u);
        IF_Select_Init(5, &selection);
        IF_SelectTypeSetGroup(2, &selection);
        EXPECT_EQ(IF_GetFirstIfIndexByIfSelect(&selection, 0), 0u);
        EXPECT_EQ(IF_GetNextIfIndexByIfSelect(&selection, 0, 0), 0u);
        EXPECT_EQ(IF_IsValidIfIndex(1), 0u);
        EXPECT_NE(IP6_GetMibStat(0x8000, &stat), 0u);
        EXPECT_NE(IP6_GetIfStat(1, 10, &stat), 0u);
        EXPECT_NE(IP_GetMibIfStat(1, &ipv4), 0u);
        EXPECT_NE(ICMP6_GetMibStat(&icmp), 0u);
        EXPECT_NE(ND_GetIfConfigInfo(1, &info), 0u);
        EXPECT_NE(IP6Mib_GetIFID(1, bytes), 0u);
        EXPECT_NE(IP6ADDR_DRVK_GetMainLLA(1, &address), 0u);
        EXPECT_NE(IP6_GetIfMTU(1, &mtu), 0u);
        EXPECT_NE(ND_GetNetToPhysicalTable(1, bytes, &neighbour, 16), 0u);
        EXPECT_NE(ND_GetNextNetToPhysicalTable(1, &neighbour), 0u);
        EXPECT_NE(IP6CFG_GetFirstFullPrefix(1, -1, &prefix), 0u);
        EXPECT_NE(IP6CFG_GetNextFullPrefix(1, -1, &prefix), 0u);
        EXPECT_NE(IP6Addr_GetLinkLocalAddr(1, &buffer), 0u);
        EXPECT_NE(IP6Mib_GetFirstAddrInVrf(0, 14, &address), 0u);
        EXPECT_NE(IP6Mib_GetNextAddrInVrf(0, 14, &address), 0u);
        EXPECT_NE(IP6Mib_GetAddrFullInfoInVrf(0, bytes, -1, &address), 0u);
        EXPECT_NE(IP6Mib_GetLinkLocalFullAddr(1, &address), 0u);
        EXPECT_NE(IP6Mib_GetFirstGatewayInVrf(0, 14, &gateway), 0u);
        EXPECT_NE(IP6Mib_GetNextGatewayInVrf(0, 14, &key, &gateway), 0u);
        EXPECT_NE(IP6Mib_GetGatewayByKey(&key, &gateway), 0u);
        EXPECT_NE(IP6ADDR_DRVK_GetGatewayByKey(&key, &gateway), 0u);
        EXPECT_EQ(hooks.descriptor(), -1);
        EXPECT_EQ(hooks.interface_name(1), nullptr);
        IpmibInterface interface;
        IpmibInterfaceTraffic traffic;
        EXPECT_NE(hooks.interfaces->find(1, &interface), 0);
        EXPECT_NE(hooks.interfaces->next(0, &interface), 0);
        EXPECT_NE(hooks.interfaces->traffic(1, &traffic), 0);
        EXPECT_EQ(hooks.interfaces->count(), 0u);
        EXPECT_EQ(hooks.interfaces->rows_changed_ms(), 0u);
        IpmibIpv4Address ipv4Address;
        IpmibIpv4Neighbour ipv4Neighbour;
        char why[100] = "";
        EXPECT_NE(hooks.ipv4->follow(why, sizeof why), 0);
        EXPECT_STRNE(why, "");
        EXPECT_NE(hooks.ipv4->next_address(0, &ipv4Address), 0);
        EXPECT_NE(hooks.ipv4->next_neighbour(0, 0, &ipv4Neighbour), 0);
        hooks.dispatch();
        hooks.begin_packet();
        hooks.reload();
    };
    expectDead();
    ASSERT_EQ(start("", {}).error, "");
    EXPECT_GE(hooks.descriptor(), 0);
    EXPECT_EQ(IF_IsValidIfIndex(1), 1u) << "the mirrors are full at once";
    EXPECT_STREQ(hooks.interface_name(1), "lo");
    EXPECT_EQ(hooks.interface_name(0x7FFFFFFF), nullptr);
    IpmibInterface first;
    ASSERT_EQ(hooks.interfaces->next(0, &first), 0);
    EXPECT_EQ(first.if_index, 1u);
    EXPECT_STREQ(first.name, "lo");
    IpmibInterfaceTraffic traffic;
    EXPECT_EQ(hooks.interfaces->traffic(1, &traffic), 0);
    EXPECT_NE(hooks.interfaces->traffic(0x7FFFFFFF, &traffic), 0);
    EXPECT_NE(hooks.interfaces->next(0x7FFFFFFF, &first), 0);

    constexpr std::uint32_t loopback = 0x7F000001;
    IpmibIpv4Address ipv4Address;
    IpmibIpv4Neighbour ipv4Neighbour;
    EXPECT_NE(hooks.ipv4->find_address(loopback, &ipv4Address), 0) << "nobody has asked to follow them";
    EXPECT_NE(hooks.ipv4->next_neighbour(0, 0, &ipv4Neighbour), 0);
    char why[100] = "";
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(hooks.ipv4->follow(why, sizeof why), 0) << why;
    }
    ASSERT_EQ(hooks.ipv4->find_address(loopback, &ipv4Address), 0);
    EXPECT_EQ(ipv4Address.if_index, 1u);
    EXPECT_EQ(ipv4Address.prefix_length, 8u);
    EXPECT_NE(hooks.ipv4->find_neighbour(1, loopback, &ipv4Neighbour), 0);
    hooks.stop();
    expectDead();
}

// Before the start, after it and after the stop; nothing was followed before.
TEST(Hooks, rowsOfIpAreThereBetweenStartAndStop)
{
    ASSERT_NE(hooks.ip, nullptr);
    const IpmibIpHooks &ip = *hooks.ip;
    EXPECT_EQ(ip.size, sizeof ip);
    IpmibIpSettings settings;
    IpmibIpCounters counters;
    IpmibTcpCounters tcp;
    IpmibIpAddress address;
    IpmibStack stack;
    char why[100] = "";
    const auto expectNothing = [&] {
        EXPECT_NE(ip.follow(IPMIB_FOLLOW_ADDRESSES, why, sizeof why), 0);
        EXPECT_STRNE(why, "");
        EXPECT_NE(ip.settings(IPMIB_IPV4, &settings), 0);
        EXPECT_NE(ip.system_counters(IPMIB_IPV4, &counters), 0);
        EXPECT_NE(ip.tcp_counters(&tcp), 0);
        EXPECT_NE(ip.next_address(0, &address), 0);
        EXPECT_NE(ip.next_stack(0, 0, &stack), 0);
        EXPECT_EQ(ip.stack_changed(), 0u);
        hooks.uptime_began(0);
    };
    expectNothing();
    ASSERT_EQ(start("", {{"router-anycast", ""}}).error, "");
    EXPECT_EQ(ip.settings(IPMIB_IPV4, &settings), 0);
    counters.counted = 0;
    EXPECT_EQ(ip.system_counters(IPMIB_IPV4, &counters), 0);
    EXPECT_EQ(ip.tcp_counters(&tcp), 0);
    ASSERT_EQ(ip.next_stack(0, 0, &stack), 0);
    EXPECT_EQ(stack.higher, 0u);
    EXPECT_EQ(stack.lower, 1u);
    EXPECT_NE(ip.next_address(0, &address), 0) << "nobody has asked to follow them";
    ASSERT_EQ(ip.follow(IPMIB_FOLLOW_ADDRESSES, why, sizeof why), 0) << why;
    ASSERT_EQ(ip.find_address(0x7F000001, &address), 0);
    EXPECT_EQ(address.if_index, 1u);
    EXPECT_EQ(address.type, std::uint32_t{IPMIB_ADDRESS_UNICAST});
    hooks.stop();
    expectNothing();
    EXPECT_NE(start("", {{"router-anycast", "yes"}}).error.find("--router-anycast"), std::string::npos);
}

TEST(Hooks, whatIsUnknownIsRefusedByName)
{
    EXPECT_EQ(hooks.size, sizeof hooks);
    Start failed = start("", {{"warp-speed", "9"}});
    EXPECT_EQ(failed.result, IPMIB_WRONG_OPTION);
    EXPECT_EQ(failed.error, "there is no option --warp-speed; those of platform linux are --ipv4-accounting, "
                            "--radvd-conf=FILE, --route-tables=LIST and --router-anycast");
    EXPECT_EQ(hooks.descriptor(), -1);
    failed = start("", {{"radvd-conf", "/dev/null"}, {"ipv4-accounting", "yes"}});
    EXPECT_EQ(failed.result, IPMIB_WRONG_OPTION + 1);
    EXPECT_EQ(failed.error, "--ipv4-accounting takes no value, not \"yes\"");
    failed = start("eth0", {});
    EXPECT_EQ(failed.result, IPMIB_WRONG_ARGUMENT);
    EXPECT_EQ(failed.error, "platform linux takes no argument, not \"eth0\"");
}

TEST(Hooks, nothingStaysOpenBehindAStop)
{
    const std::size_t before = openDescriptors();
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(start("", {}).result, 0);
        hooks.begin_packet();
        hooks.dispatch();
        hooks.stop();
        start("nonsense", {});
    }
    EXPECT_EQ(openDescriptors(), before);
}

} // namespace
