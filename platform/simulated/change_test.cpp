// SPDX-License-Identifier: BSD-3-Clause
// What is changed of a device while it runs, and what goes wrong with its answers, through the hooks.
#include "test_scenario.h"

#include "device/answer_faults.h"
#include "device/counters.h"

#include <ipmib/platform.h>

#include <nlohmann/json.hpp>

#include <vector>

namespace ipmib::simulated
{
namespace
{

std::string change(const std::string &text)
{
    char error[512] = "";
    const int result = hooks.rehearsal->change(text.data(), text.size(), 1, error, sizeof error);
    EXPECT_EQ(result != 0, *error != '\0');
    return error;
}

AnswerFaults faultsOf(const std::string &text)
{
    const Json json = Json::parse(text);
    return AnswerFaults::read(Value(json));
}

TEST(AnswerFaults, aProbabilityIsKeptAndRepeatsWithItsSeed)
{
    const auto drawn = [](const std::string &seed) {
        AnswerFaults faults = faultsOf(R"({"genErr": {"probability": 0.25, "seed": )" + seed + "}}");
        std::vector<bool> all;
        for (int i = 0; i < 10'000; ++i) {
            all.push_back(faults.next(0).kinds != 0);
        }
        return all;
    };
    const auto one = drawn("1");
    EXPECT_NEAR(static_cast<double>(std::ranges::count(one, true)), 2'500, 200);
    EXPECT_EQ(drawn("1"), one);
    EXPECT_NE(drawn("2"), one);
}

TEST(AnswerFaults, holdAtTheirTimesAndAsTheyAreSwitched)
{
    AnswerFaults faults = faultsOf(R"({"delay": {"seconds": 2, "times": [{"from": 10, "to": 20}]}, "silence": false})");
    EXPECT_EQ(faults.next(9'999).kinds, 0u);
    EXPECT_EQ(faults.next(10'000).kinds, unsigned{IPMIB_FAULT_DELAY});
    EXPECT_EQ(faults.next(10'000).delay_ms, 2'000u);
    EXPECT_EQ(faults.next(20'000).kinds, 0u);
    const Json text = Json::parse(R"({"silence": {"times": [{"from": 0, "to": 5}]}, "delay": false})");
    AnswerFaults changed = faults.changed(Value(text), 15'000);
    EXPECT_EQ(changed.next(15'000).kinds, unsigned{IPMIB_FAULT_SILENCE}) << "times count from the change";
    EXPECT_EQ(changed.next(20'000).kinds, 0u);
    const Json on = Json::parse(R"({"delay": true})");
    EXPECT_EQ(changed.changed(Value(on), 0).next(12'000).delay_ms, 2'000u) << "as it was described";
}

TEST(Counter, goesOnFromWhereItIsWhenItIsChanged)
{
    const auto read = [](const char *text) { return Json::parse(text); };
    const Json began = read(R"({"start": 100, "rate": 10})");
    const Json faster = read(R"({"rate": 1000})");
    const Json set = read(R"({"start": 5})");
    const Counter changed = Counter::read(Value(began)).changed(Value(faster), 60'000);
    EXPECT_EQ(changed.after(60'000), 700u);
    EXPECT_EQ(changed.after(61'000), 1'700u);
    const Counter reset = changed.changed(Value(set), 61'000);
    EXPECT_EQ(reset.after(61'000), 5u);
    EXPECT_EQ(reset.after(62'000), 1'005u);
    const Json ramp = read(R"({"rate": {"ramp": {"from": 0, "to": 100, "seconds": 10}}})");
    EXPECT_EQ(reset.changed(Value(ramp), 62'000).after(72'000), 1'005u + 500) << "its times count from the change";
}

TEST(Schedule, rememberWhatWasWhenTheyAreReplaced)
{
    const Json text = Json::parse(R"([{"from": 10, "to": 20, "every": 60}])");
    const Schedule before = Schedule::read(Value(text));
    const Schedule down = Schedule::always().startingAt(100'000, &before);
    EXPECT_EQ(down.coveredBefore(100'000), 20'000u);
    EXPECT_EQ(down.coveredBefore(130'000), 50'000u);
    EXPECT_EQ(down.lastChange(130'000), 100'000u);
    const Schedule up = Schedule().startingAt(130'000, &down);
    EXPECT_FALSE(up.covers(130'000));
    EXPECT_EQ(up.coveredBefore(500'000), 50'000u);
    EXPECT_EQ(up.lastChange(500'000), 130'000u);
}

TEST(Change, ofALinkIsToldAtOnce)
{
    const ScenarioFile file(R"({"interfaces": [{"name": "a", "ifIndex": 5}, {"name": "b", "ifIndex": 6}]})");
    ASSERT_EQ(start(file.path()), "");
    std::vector<IpmibLinkChange> told;
    hooks.on_link_change(
        [](void *to, const IpmibLinkChange *each) {
            static_cast<std::vector<IpmibLinkChange> *>(to)->push_back(*each);
        },
        &told);
    EXPECT_EQ(change(R"({"interfaces": [{"name": "b", "down": [{"from": 0}]}]})"), "");
    ASSERT_EQ(told.size(), 1u);
    EXPECT_EQ(told[0].if_index, 6u);
    EXPECT_EQ(told[0].before, unsigned{IPMIB_OPER_UP});
    EXPECT_EQ(told[0].oper_status, unsigned{IPMIB_OPER_DOWN});
    EXPECT_EQ(told[0].admin_status, unsigned{IPMIB_ADMIN_UP});
    EXPECT_EQ(change(R"({"interfaces": [{"name": "b", "up": false}]})"), "");
    EXPECT_EQ(told.size(), 1u) << "it was down";
    EXPECT_EQ(change(R"({"interfaces": [{"name": "b", "up": true}]})"), "");
    ASSERT_EQ(told.size(), 2u);
    EXPECT_EQ(told[1].oper_status, unsigned{IPMIB_OPER_UP});
    hooks.on_link_change(nullptr, nullptr);
    hooks.stop();
}

TEST(Change, thatOnlyIsLookedAtChangesNothing)
{
    const ScenarioFile file(R"({"interfaces": [{"name": "a", "ifIndex": 5}]})");
    ASSERT_EQ(start(file.path()), "");
    const std::string text = R"({"interfaces": [{"name": "a", "up": false}]})";
    char error[100] = "";
    EXPECT_EQ(hooks.rehearsal->change(text.data(), text.size(), 0, error, sizeof error), 0);
    IpmibInterface row{};
    EXPECT_EQ(hooks.interfaces->find(5, &row), 0);
    EXPECT_EQ(row.oper_status, unsigned{IPMIB_OPER_UP});
    EXPECT_EQ(change("{"), "line 1, column 2: syntax error while parsing object key - unexpected end of input; "
                           "expected string literal");
    EXPECT_EQ(change(std::string(1'000, '[') + std::string(1'000, ']')), "it is nested more than 64 deep");
    hooks.stop();
}

TEST(Reboots, beginTheDeviceAnew)
{
    const std::string scenario =
        R"({"uptime": 5000, "interfaces": [{"name": "a", "ifIndex": 5, "down": [{"from": 40, "to": 60}],
        "counters": {"ipv6": {"inReceives": {"start": 7, "rate": 10}}}}], "reboots": [{"from": 100, "to": 110, "every": 1000}]})";
    const ScenarioFile file(scenario);
    const auto at = [&](unsigned seconds) {
        const Running running(file.path(), seconds);
        hooks.begin_packet();
        IpmibAnswerFaults faults{};
        hooks.rehearsal->next_answer(&faults);
        Ip6MibStat stat{};
        EXPECT_EQ(IP6_GetIfStat(5, 10, &stat), 0u);
        return std::to_string(hooks.uptime_ms() / 1'000) + " " + std::to_string(hooks.rehearsal->reboots()) + " " +
               (faults.kinds == IPMIB_FAULT_SILENCE ? "silent " : "") + std::to_string(stat.in_receives);
    };
    EXPECT_EQ(at(50), "5050 0 407");
    EXPECT_EQ(at(99), "5099 0 797");
    EXPECT_EQ(at(100), "5100 0 silent 807");
    EXPECT_EQ(at(110), "0 1 7");
    EXPECT_EQ(at(155), "45 1 407");
    EXPECT_EQ(at(1'099), "989 1 9697");
    EXPECT_EQ(at(1'105), "995 1 silent 9757");
    EXPECT_EQ(at(1'111), "1 1 17");
}

} // namespace
} // namespace ipmib::simulated
