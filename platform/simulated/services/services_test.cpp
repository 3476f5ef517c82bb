// SPDX-License-Identifier: BSD-3-Clause
// The services over a scenario: what they answer, and that each of them fails when it shall.
#include "core/codes.h"
#include "test_scenario.h"

#include <ipmib/platform.h>

#include <arpa/inet.h>

#include <cstring>

namespace ipmib::simulated
{
namespace
{

const std::string full = IPMIB_SOURCE_DIR "/platform/simulated/testdata/full.json";

// Every service, asked about interface 7 of a device with something in each table: what it returns.
std::uint32_t call(Service service)
{
    std::uint8_t address[16];
    inet_pton(AF_INET6, "2001:db8::2", address);
    std::uint8_t own[16];
    inet_pton(AF_INET6, "2001:db8::1", own);
    IfSelection selection{};
    std::uintptr_t iterator = 1;
    std::uint32_t number = 0;
    std::uint32_t other = 0;
    Ip6MibStat ip6{};
    IpMibIfStat ip4{};
    Icmp6MibStat icmp{};
    NdIfConfigInfo info{};
    FullAddressRecord record{};
    NeighbourEntry neighbour{};
    FullPrefixRecord prefix{};
    LinkLocalBuffer buffer{};
    GatewayRecord gateway{};
    GatewayKey key{};
    neighbour.if_index = ipmib_be32(7);
    key.if_index = ipmib_be32(7);
    std::memcpy(key.address, address, sizeof address);
    GatewayKey before{};
    before.if_index = ipmib_be32(7);
    if (service != Service::IF_SelectTypeSetGroup) {
        IF_SelectTypeSetGroup(2, &selection);
    }
    switch (service) {
    case Service::IP6_DaemonCheck:
        return IP6_DaemonCheck(1);
    case Service::IP_DaemonCheck:
        return IP_DaemonCheck(1);
    case Service::IF_Select_Init:
        return IF_Select_Init(5, &selection);
    case Service::IF_SelectType_Set:
        return IF_SelectType_Set(6, &selection);
    case Service::IF_SelectTypeSetGroup:
        return IF_SelectTypeSetGroup(2, &selection);
    case Service::IF_SelectCondition_Set:
        return IF_SelectCondition_Set(8, &selection);
    case Service::IF_IteratorInitialize:
        return static_cast<std::uint32_t>(IF_IteratorInitialize());
    case Service::IF_IteratorFinalize:
        return IF_IteratorFinalize(&iterator);
    case Service::IF_GetFirstIfIndexByIfSelect:
        return IF_GetFirstIfIndexByIfSelect(&selection, 1);
    case Service::IF_GetNextIfIndexByIfSelect:
        return IF_GetNextIfIndexByIfSelect(&selection, 1, 7);
    case Service::IF_IsValidIfIndex:
        return IF_IsValidIfIndex(7);
    case Service::IP6_GetMibStat:
        return IP6_GetMibStat(0x8000, &ip6);
    case Service::IP6_GetIfStat:
        return IP6_GetIfStat(7, 10, &ip6);
    case Service::IP_GetMibIfStat:
        return IP_GetMibIfStat(7, &ip4);
    case Service::ICMP6_GetMibStat:
        return ICMP6_GetMibStat(&icmp);
    case Service::ND_GetHopLimit:
        return ND_GetHopLimit();
    case Service::ND_GetIfConfigInfo:
        return ND_GetIfConfigInfo(7, &info);
    case Service::IP6Mib_GetIFID:
        return IP6Mib_GetIFID(7, own);
    case Service::IP6ADDR_DRVK_GetMainLLA:
        return IP6ADDR_DRVK_GetMainLLA(8, &record);
    case Service::IP6_GetIfMTU:
        return IP6_GetIfMTU(7, &number);
    case Service::ND_GetNetToPhysicalTable:
        return ND_GetNetToPhysicalTable(7, address, &neighbour, 16);
    case Service::ND_GetNextNetToPhysicalTable:
        return ND_GetNextNetToPhysicalTable(1, &neighbour);
    case Service::IP6CFG_GetFirstFullPrefix:
        return IP6CFG_GetFirstFullPrefix(7, -1, &prefix);
    case Service::IP6CFG_GetNextFullPrefix:
        return IP6CFG_GetNextFullPrefix(7, -1, &prefix);
    case Service::IP6Addr_GetLinkLocalAddr:
        return IP6Addr_GetLinkLocalAddr(7, &buffer);
    case Service::IP6Mib_GetFirstAddrInVrf:
        return IP6Mib_GetFirstAddrInVrf(0, 14, &record);
    case Service::IP6Mib_GetNextAddrInVrf:
        return IP6Mib_GetNextAddrInVrf(0, 14, &record);
    case Service::IP6Mib_GetAddrFullInfoInVrf:
        return IP6Mib_GetAddrFullInfoInVrf(0, own, -1, &record);
    case Service::IP6Mib_GetLinkLocalFullAddr:
        return IP6Mib_GetLinkLocalFullAddr(7, &record);
    case Service::IP6Mib_GetFirstGatewayInVrf:
        return IP6Mib_GetFirstGatewayInVrf(0, 14, &gateway);
    case Service::IP6Mib_GetNextGatewayInVrf:
        return IP6Mib_GetNextGatewayInVrf(0, 14, &before, &gateway);
    case Service::IP6Mib_GetGatewayByKey:
        return IP6Mib_GetGatewayByKey(&key, &gateway);
    case Service::IP6ADDR_DRVK_GetGatewayByKey:
        return IP6ADDR_DRVK_GetGatewayByKey(&key, &gateway);
    case Service::TIME_GetSystemBootTime:
        return TIME_GetSystemBootTime(&number, &other);
    case Service::count:
        break;
    }
    return 0xBAD;
}

// What it returns when it succeeds.
std::uint32_t success(Service service)
{
    switch (service) {
    case Service::IF_IteratorInitialize:
    case Service::IF_IsValidIfIndex:
        return 1;
    case Service::IF_GetFirstIfIndexByIfSelect:
        return 7;
    case Service::IF_GetNextIfIndexByIfSelect:
        return 8;
    case Service::ND_GetHopLimit:
        return 63;
    default:
        return 0;
    }
}

const char *const device = R"("hopLimit": 63, "interfaces": [
    {"name": "a", "ifIndex": 7, "mac": "02:00:5e:00:53:01", "addresses": ["2001:db8::1/64"],
     "neighbours": [{"address": "2001:db8::2"}], "routers": [{"address": "2001:db8::2"}]},
    {"name": "b", "mac": "02:00:5e:00:53:02"}])";

template <class Visit>
void eachService(Visit visit)
{
    for (int i = 0; i < static_cast<int>(Service::count); ++i) {
        visit(static_cast<Service>(i));
    }
}

TEST(Services, allOfThemAnswer)
{
    const ScenarioFile file(std::string("{") + device + "}");
    const Running running(file.path(), 0);
    eachService([](Service service) { EXPECT_EQ(call(service), success(service)) << infoOf(service).name; });
}

TEST(Services, eachFailsUnderItsNameAndNoOther)
{
    eachService([](Service failing) {
        const ScenarioFile file(std::string("{") + device + R"(, "failures": [{"service": ")" + infoOf(failing).name +
                                R"(", "result": 4242, "times": [{"from": 5, "to": 6}]}]})");
        const Running running(file.path(), 5);
        eachService([failing](Service service) {
            // A selection is prepared with one of them.
            const bool prepared =
                failing == Service::IF_SelectTypeSetGroup &&
                (service == Service::IF_GetFirstIfIndexByIfSelect || service == Service::IF_GetNextIfIndexByIfSelect);
            if (!prepared) {
                EXPECT_EQ(call(service), service == failing ? 4242u : success(service))
                    << infoOf(failing).name << " fails, asked " << infoOf(service).name;
            }
        });
    });
}

TEST(Services, aFailureHasItsTimeItsInterfaceAndAResultOfItsOwn)
{
    const ScenarioFile file(std::string("{") + device + R"(, "failures": [
        {"service": "IP6_GetIfStat", "interface": "b", "result": "noMore", "times": [{"from": 5, "to": 6}]},
        {"service": "IF_IsValidIfIndex", "times": [{"from": 5, "to": 6}]},
        {"service": "IP6_GetMibStat", "times": [{"from": 5, "to": 6}]}]})");
    Ip6MibStat stat;
    {
        const Running running(file.path(), 5);
        EXPECT_EQ(IP6_GetIfStat(7, 10, &stat), 0u);
        EXPECT_EQ(IP6_GetIfStat(8, 10, &stat), platform::noMore);
        EXPECT_EQ(IF_IsValidIfIndex(7), 0u);
        EXPECT_EQ(IP6_GetMibStat(0x8000, &stat), platform::notFound);
    }
    const Running running(file.path(), 6);
    EXPECT_EQ(IP6_GetIfStat(8, 10, &stat), 0u);
    EXPECT_EQ(IF_IsValidIfIndex(7), 1u);
    EXPECT_EQ(IP6_GetMibStat(0x8000, &stat), 0u);
}

TEST(Services, withoutIpv6AllThatBelongsToItFails)
{
    const ScenarioFile file(std::string("{") + device +
                            R"(, "services": {"ipv6": {"down": [{"from": 5}]}, "ipv4": {"down": [{"from": 9}]}}})");
    for (const unsigned time : {4u, 5u, 9u}) {
        const Running running(file.path(), time);
        eachService([time](Service service) {
            const auto part = infoOf(service).part;
            const bool fails =
                (part == ServiceInfo::Part::ip6 && time >= 5) || (part == ServiceInfo::Part::ip4 && time >= 9);
            EXPECT_EQ(call(service), fails ? infoOf(service).failure : success(service))
                << infoOf(service).name << " at " << time;
        });
    }
}

TEST(Services, recordsCarryWhatTheScenarioSays)
{
    const Running running(full, 0);
    FullAddressRecord address{};
    inet_pton(AF_INET6, "2001:db8::1", address.address);
    ASSERT_EQ(IP6Mib_GetNextAddrInVrf(0, 14, &address), 0u);
    EXPECT_EQ(address.if_index, 7u);
    EXPECT_EQ(address.prefix_length, 128u);
    EXPECT_EQ(address.origin, platform::addressOriginDhcp);
    EXPECT_EQ(address.state, platform::addressStateDeprecated);
    EXPECT_EQ(address.flags, platform::addressFlagAnycast);
    EXPECT_EQ(address.created_s, 100u);
    EXPECT_EQ(address.last_changed_s, 200u);

    FullPrefixRecord prefix{};
    ASSERT_EQ(IP6CFG_GetFirstFullPrefix(7, -1, &prefix), 0u);
    EXPECT_EQ(ipmib_be32_get(prefix.if_index), 7u);
    EXPECT_EQ(ipmib_be32_get(prefix.length), 64u);
    EXPECT_EQ(ipmib_be32_get(prefix.origin), platform::prefixOriginRouter);
    EXPECT_EQ(ipmib_be32_get(prefix.valid_s), 1000u);
    EXPECT_EQ(ipmib_be32_get(prefix.preferred_s), 500u);
    EXPECT_EQ(prefix.flags, platform::prefixFlagAutonomous);
    EXPECT_EQ(ipmib_be32_get(prefix.learned_at_s), 5000u);

    NeighbourEntry neighbour{};
    neighbour.if_index = ipmib_be32(7);
    ASSERT_EQ(ND_GetNextNetToPhysicalTable(1, &neighbour), 0u);
    EXPECT_EQ(neighbour.link_layer[5], 2);
    EXPECT_EQ(ipmib_be32_get(neighbour.type), 3u);
    EXPECT_EQ(ipmib_be32_get(neighbour.state), 1u);
    EXPECT_EQ(ipmib_be32_get(neighbour.last_updated_s), 4000u);
    EXPECT_NE(ND_GetNextNetToPhysicalTable(1, &neighbour), 0u);
    ASSERT_EQ(ND_GetNextNetToPhysicalTable(2, &neighbour), 0u);
    EXPECT_EQ(ipmib_be32_get(neighbour.last_updated_s), 5000u) << "at the start";

    GatewayRecord gateway{};
    ASSERT_EQ(IP6Mib_GetFirstGatewayInVrf(0, 2, &gateway), 0u);
    EXPECT_EQ(ipmib_be32_get(gateway.if_index), 7u);
    EXPECT_EQ(ipmib_be32_get(gateway.lifetime_s), 30u);
    EXPECT_EQ(ipmib_be32_get(gateway.flags) >> 27, 3u);
    ASSERT_EQ(IP6Mib_GetFirstGatewayInVrf(0, 14, &gateway), 0u);
    EXPECT_EQ(ipmib_be32_get(gateway.lifetime_s), 65535u) << "the longest that can be told";
    EXPECT_NE(IP6Mib_GetFirstGatewayInVrf(0, 3, &gateway), 0u) << "no such class";
}

TEST(Services, advertisementsAndTheirHopLimit)
{
    const Running running(full, 0);
    NdIfConfigInfo info{};
    std::uint32_t mtu = 0;
    ASSERT_EQ(ND_GetIfConfigInfo(7, &info), 0u);
    EXPECT_EQ(info.reachable_ms, 15'000u);
    EXPECT_EQ(info.retransmit_ms, 250u);
    EXPECT_EQ(info.max_interval_s, 30u);
    EXPECT_EQ(info.min_interval_s, 10u);
    EXPECT_EQ(info.default_lifetime_s, 90u);
    EXPECT_EQ(info.flags,
              static_cast<std::uint32_t>(ND_FLAG_SEND_ADVERTS | ND_FLAG_MANAGED | ND_FLAG_OTHER_CONFIG |
                                         ND_FLAG_LIFETIME_VALID | ND_FLAG_REACHABLE_VALID | ND_FLAG_RETRANSMIT_VALID));
    EXPECT_EQ(IP6_GetIfMTU(7, &mtu), 0u);
    EXPECT_EQ(mtu, 1400u);
    EXPECT_EQ(ND_GetHopLimit(), 32u) << "of the row whose settings were asked for";
    EXPECT_EQ(ND_GetHopLimit(), 63u) << "of the device";

    ASSERT_EQ(ND_GetIfConfigInfo(10, &info), 0u);
    EXPECT_EQ(info.flags, static_cast<std::uint32_t>(ND_FLAG_NO_MTU_OPTION)) << "nothing is sent";
    EXPECT_EQ(info.max_interval_s, 600u);
    EXPECT_EQ(info.min_interval_s, 198u);
    EXPECT_NE(ND_GetIfConfigInfo(8, &info), 0u) << "no IPv6";
}

TEST(Services, anInterfaceIsUpForIpv6WithAUsableLinkLocalAddress)
{
    const Running running(full, 0);
    FullAddressRecord record{};
    std::uint8_t identifier[8];
    EXPECT_NE(IP6ADDR_DRVK_GetMainLLA(7, &record), 0u) << "it is tentative";
    EXPECT_EQ(IP6Mib_GetLinkLocalFullAddr(7, &record), 0u);
    EXPECT_EQ(record.prefix_length, 10u);
    EXPECT_EQ(IP6Mib_GetIFID(7, identifier), 0u);
    EXPECT_EQ(identifier[7], 7);
    EXPECT_EQ(IP6ADDR_DRVK_GetMainLLA(10, &record), 0u) << "a generated one";
    EXPECT_NE(IP6Mib_GetIFID(8, identifier), 0u) << "no IPv6";
}

TEST(Services, whatTheSelectionLeavesOutIsNotWalked)
{
    const Running running(full, 0);
    IfSelection selection;
    IF_Select_Init(5, &selection);
    IF_SelectType_Set(71, &selection);
    EXPECT_EQ(IF_GetFirstIfIndexByIfSelect(&selection, 1), 7u);
    EXPECT_EQ(IF_GetNextIfIndexByIfSelect(&selection, 1, 7), 0u);
    IF_SelectType_Set(6, &selection);
    EXPECT_EQ(IF_GetNextIfIndexByIfSelect(&selection, 1, 7), 9u);
    IF_SelectTypeSetGroup(2, &selection);
    EXPECT_EQ(IF_GetNextIfIndexByIfSelect(&selection, 1, 7), 8u);
}

TEST(Services, countersOfTheSystemMayBeSaidByThemselves)
{
    const Running running(full, 0);
    Ip6MibStat stat{};
    ASSERT_EQ(IP6_GetMibStat(0x8000, &stat), 0u);
    EXPECT_EQ(stat.out_requests, 12u);
    EXPECT_GT(stat.in_receives, 0u);
    Icmp6MibStat icmp{};
    ASSERT_EQ(ICMP6_GetMibStat(&icmp), 0u);
    EXPECT_EQ(icmp.counter[ICMP6_STAT_IN_MSGS], 9u);
    EXPECT_EQ(icmp.counter[ICMP6_STAT_IN_TYPE + 255], 1u);
}

} // namespace
} // namespace ipmib::simulated
