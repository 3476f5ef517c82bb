// SPDX-License-Identifier: BSD-3-Clause
// The platform's life as a host sees it: options, the clock, and a scenario that is read again.
#include "test_scenario.h"

#include <ipmib/platform.h>

#include <poll.h>
#include <time.h>

#include <string>
#include <vector>

namespace ipmib::simulated
{
namespace
{

const IpmibPlatformHooks &hooks = ipmib_platform_hooks;

std::vector<std::string> &logged()
{
    static std::vector<std::string> lines;
    return lines;
}

std::uint64_t received(std::uint32_t ifIndex)
{
    hooks.begin_packet();
    Ip6MibStat stat{};
    EXPECT_EQ(IP6_GetIfStat(ifIndex, 10, &stat), 0u);
    return stat.in_receives;
}

TEST(SimulatedHooks, aStartNeedsAScenario)
{
    EXPECT_EQ(start(""), "platform simulated needs a scenario: --platform simulated:FILE");
    EXPECT_EQ(start("/no/file"), "/no/file: cannot read it: No such file or directory");
    const IpmibPlatformOption option{"speed", "3"};
    const IpmibPlatformHost host{nullptr, "x", &option, 1};
    char error[100];
    EXPECT_EQ(hooks.start(&host, error, sizeof error), IPMIB_WRONG_OPTION);
    EXPECT_STREQ(error, "there is no option --speed; that of platform simulated is --at=SECONDS");
}

TEST(SimulatedHooks, aTimeThatIsNoneIsRefused)
{
    const ScenarioFile file("{}");
    for (const char *time : {"x", "-1", "5s", "nan", "1e10"}) {
        EXPECT_EQ(start(file.path(), time),
                  std::string("--at needs the seconds since the device's start, not \"") + time + "\"");
    }
}

TEST(SimulatedHooks, nothingIsServedBeforeTheStartAndAfterTheStop)
{
    EXPECT_NE(IP6_DaemonCheck(1), 0u);
    EXPECT_EQ(IF_IteratorInitialize(), 0u);
    const ScenarioFile file(R"({"interfaces": [{"name": "a", "ifIndex": 5}]})");
    ASSERT_EQ(start(file.path()), "");
    EXPECT_EQ(IP6_DaemonCheck(1), 0u);
    EXPECT_EQ(IF_IsValidIfIndex(5), 1u);
    EXPECT_EQ(hooks.descriptor(), -1);
    EXPECT_STREQ(hooks.interface_name(5), "a");
    EXPECT_EQ(hooks.interface_name(6), nullptr);
    hooks.dispatch();
    hooks.stop();
    EXPECT_NE(IP6_DaemonCheck(1), 0u);
    EXPECT_EQ(IF_IsValidIfIndex(5), 0u);
    EXPECT_EQ(hooks.interface_name(5), nullptr);
}

TEST(SimulatedHooks, linksThatGoUpAndDownAreToldByTheSchedule)
{
    const ScenarioFile file(R"({"interfaces": [
        {"name": "a", "ifIndex": 5, "down": [{"from": 1, "to": 1.05, "every": 0.2}]},
        {"name": "b", "ifIndex": 6, "gone": [{"from": 1.03, "to": 1.07}]}, {"name": "c", "ifIndex": 7}]})");
    ASSERT_EQ(start(file.path()), "");
    ASSERT_GE(hooks.descriptor(), 0);
    std::vector<std::string> told;
    hooks.on_link_change(
        [](void *context, const IpmibLinkChange *change) {
            static_cast<std::vector<std::string> *>(context)->push_back(std::to_string(change->if_index) + " " +
                                                                        std::to_string(change->before) + " " +
                                                                        std::to_string(change->oper_status));
        },
        &told);
    while (told.size() < 5) {
        pollfd work{hooks.descriptor(), POLLIN, 0};
        ASSERT_EQ(poll(&work, 1, 30'000), 1) << "nothing is told any more";
        hooks.dispatch();
    }
    told.resize(5);
    EXPECT_EQ(told, (std::vector<std::string>{"5 1 2", "6 1 0", "5 2 1", "6 0 1", "5 1 2"}));
    hooks.on_link_change(nullptr, nullptr);
    hooks.stop();
}

TEST(SimulatedHooks, theClockRunsAndAPacketSeesOneMoment)
{
    const ScenarioFile file(
        R"({"interfaces": [{"name": "a", "counters": {"ipv6": {"inReceives": {"rate": 1000000}}}}]})");
    ASSERT_EQ(start(file.path()), "");
    const std::uint64_t before = received(1);
    const timespec pause{0, 5'000'000};
    nanosleep(&pause, nullptr);
    Ip6MibStat stat{};
    IP6_GetIfStat(1, 10, &stat);
    EXPECT_EQ(stat.in_receives, before) << "within the packet";
    EXPECT_GE(received(1), before + 4'000);
    hooks.stop();
}

TEST(SimulatedHooks, aStoppedClockStandsStill)
{
    const ScenarioFile file(
        R"({"uptime": 30, "interfaces": [{"name": "a", "counters": {"ipv6": {"inReceives": {"rate": 1000}}}}]})");
    ASSERT_EQ(start(file.path(), "12.5"), "");
    EXPECT_EQ(received(1), 12'500u);
    EXPECT_EQ(received(1), 12'500u);
    std::uint32_t seconds = 0;
    std::uint32_t other = 1;
    EXPECT_EQ(TIME_GetSystemBootTime(&seconds, &other), 0u);
    EXPECT_EQ(seconds, 42u);
    EXPECT_EQ(hooks.uptime_ms(), 42'500u);
    IpmibIpInterface row;
    ASSERT_EQ(hooks.ip->next_interface(IPMIB_IPV4, 0, &row), 0);
    EXPECT_EQ(row.if_index, 1u);
    EXPECT_NE(hooks.ip->next_interface(IPMIB_IPV4, 1, &row), 0);
    hooks.stop();
    EXPECT_EQ(hooks.uptime_ms(), 0u);
    EXPECT_NE(hooks.ip->next_interface(IPMIB_IPV4, 0, &row), 0);
}

TEST(SimulatedHooks, aReloadTakesTheFileAsItIsNowAndTheClockGoesOn)
{
    ScenarioFile file(R"({"interfaces": [{"name": "a"}]})");
    const IpmibPlatformOption option{"at", "10"};
    const IpmibPlatformHost host{[](int, const char *line) { logged().push_back(line); }, file.path().c_str(), &option,
                                 1};
    char error[100];
    ASSERT_EQ(hooks.start(&host, error, sizeof error), 0);
    file.write(R"({"interfaces": [{"name": "b", "counters": {"ipv6": {"inReceives": {"rate": 3}}}}, {"name": "c"}]})");
    hooks.reload();
    EXPECT_STREQ(hooks.interface_name(1), "b");
    EXPECT_STREQ(hooks.interface_name(2), "c");
    EXPECT_EQ(received(1), 30u);

    file.write(R"({"interfaces": [{"name": "d", "mtu": 5}]})");
    hooks.reload();
    EXPECT_STREQ(hooks.interface_name(1), "b") << "the last good one stays";
    ASSERT_EQ(logged().size(), 1u);
    EXPECT_EQ(logged()[0], "simulated: " + file.path() +
                               ": interfaces[0].mtu: 5 is not a number from 1280 to 65535; the device stays as it was");
    hooks.stop();
}

} // namespace
} // namespace ipmib::simulated
