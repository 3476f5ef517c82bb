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
    EXPECT_GE(hooks.descriptor(), 0);
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

std::string nameOf(std::uint32_t ifIndex)
{
    const char *name = hooks.interface_name(ifIndex);
    return name == nullptr ? "" : name;
}

// The handle of an instance, as a host has it.
class Another
{
  public:
    explicit Another(const char *argument)
    {
        char error[300] = "";
        hooks.instances->create(argument, &handle_, error, sizeof error);
        failure = error;
    }
    ~Another()
    {
        if (handle_ != nullptr) {
            hooks.instances->destroy(handle_);
        }
    }
    Another(const Another &) = delete;
    Another &operator=(const Another &) = delete;

    void select() const { hooks.instances->select(handle_); }

    std::string failure;

  private:
    IpmibInstance *handle_ = nullptr;
};

constexpr const char *fleet = R"({
    "interfaces": [{"name": "own", "ifIndex": 1}],
    "devices": [
        {"name": "core", "scenario": {"uptime": 500, "interfaces": [{"name": "up", "ifIndex": 2}]}},
        {"name": "access{n}", "count": 300, "scenario": {
            "system": {"name": "ac-{n}", "location": "rack {n/100}, place {n%100}"},
            "interfaces": [{"name": "lan{n}", "ifIndex": 3,
                            "ipv4Addresses": [{"address": "10.{n/256}.{n%256}.1/24"}]}]}}
    ]})";

TEST(SimulatedFleet, servicesAndHooksAnswerForTheDeviceThatIsSelected)
{
    const ScenarioFile file(fleet);
    const Running running(file.path(), 0);
    const Another core("core");
    const Another access("access300");
    ASSERT_EQ(core.failure + access.failure, "");
    EXPECT_EQ(nameOf(1), "own") << "making devices selects none";
    core.select();
    EXPECT_EQ(nameOf(1), "");
    EXPECT_EQ(nameOf(2), "up");
    EXPECT_EQ(IF_IsValidIfIndex(2), 1u);
    EXPECT_EQ(hooks.uptime_ms(), 500'000u);
    access.select();
    EXPECT_EQ(nameOf(3), "lan300");
    EXPECT_EQ(IF_IsValidIfIndex(2), 0u);
    EXPECT_EQ(hooks.interfaces->count(), 1u);
    IpmibIpv4Address row{};
    ASSERT_EQ(hooks.ipv4->next_address(0, &row), 0);
    EXPECT_EQ(row.address, 0x0A012C01u);
    hooks.instances->select(nullptr);
    EXPECT_EQ(nameOf(1), "own");
}

TEST(SimulatedFleet, aDeviceThatEndsLeavesTheFilesOwnOneSelected)
{
    const ScenarioFile file(fleet);
    const Running running(file.path(), 0);
    {
        const Another core("core");
        core.select();
    }
    EXPECT_EQ(nameOf(1), "own");
    EXPECT_EQ(IF_IsValidIfIndex(1), 1u);
}

TEST(SimulatedFleet, theContextsAreTheDevicesByName)
{
    const ScenarioFile file(fleet);
    const Running running(file.path(), 0);
    IpmibContext context{};
    ASSERT_EQ(hooks.instances->context(0, &context), 0);
    EXPECT_STREQ(context.name, "core");
    ASSERT_EQ(hooks.instances->context(300, &context), 0);
    EXPECT_STREQ(context.name, "access300");
    EXPECT_STREQ(context.argument, "access300");
    EXPECT_EQ(hooks.instances->context(301, &context), -1);
    EXPECT_EQ(Another("nobody").failure, file.path() + " has no device \"nobody\"");
}

TEST(SimulatedFleet, eachDeviceHasASystemGroupOfItsOwn)
{
    const ScenarioFile file(fleet);
    const Running running(file.path(), 0);
    IpmibSystem system{};
    EXPECT_EQ(hooks.system(&system), -1) << "the file's own device says nothing of itself";
    const Another core("core");
    core.select();
    ASSERT_EQ(hooks.system(&system), 0);
    EXPECT_STREQ(system.name, "core");
    const Another access("access217");
    access.select();
    ASSERT_EQ(hooks.system(&system), 0);
    EXPECT_STREQ(system.name, "ac-217");
    EXPECT_STREQ(system.location, "rack 2, place 17");
    EXPECT_STREQ(system.contact, "");
}

TEST(SimulatedFleet, aFileThatIsReadAgainChangesAllItsDevices)
{
    ScenarioFile file(fleet);
    const Running running(file.path(), 0);
    const Another core("core");
    const auto before = hooks.instances->contexts_changed();
    file.write(R"({"devices": [{"name": "core", "scenario": {"interfaces": [{"name": "new", "ifIndex": 2}]}}]})");
    hooks.reload();
    EXPECT_NE(hooks.instances->contexts_changed(), before);
    core.select();
    EXPECT_EQ(nameOf(2), "up");
    hooks.reload();
    EXPECT_EQ(nameOf(2), "new");
}

TEST(SimulatedFleet, aDeviceMayStandInAFileOfItsOwn)
{
    const ScenarioFile device(R"({"interfaces": [{"name": "{n}th", "ifIndex": 1}]})");
    const std::string name = device.path().substr(device.path().find_last_of('/') + 1);
    const ScenarioFile file(R"({"devices": [{"name": "d{n}", "count": 2, "scenario": ")" + name + "\"}]}");
    const Running running(file.path(), 0);
    const Another second("d2");
    second.select();
    EXPECT_EQ(nameOf(1), "2th");
    const ScenarioFile wrong(R"({"devices": [{"name": "d", "scenario": "/no/file"}]})");
    EXPECT_EQ(start(wrong.path()),
              wrong.path() + ": devices[0].scenario: /no/file: cannot read it: No such file or directory");
}

} // namespace
} // namespace ipmib::simulated
