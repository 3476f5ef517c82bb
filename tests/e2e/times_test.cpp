// SPDX-License-Identifier: BSD-3-Clause
// Moments in tables are values of the sysUpTime that the same agent shows, however the tables are served.

#include "e2e/master_under_test.h"

#include <nlohmann/json.hpp>

#include <map>

namespace ipmib::e2e
{

namespace
{

using Moments = std::map<std::string, std::uint64_t>; // hundredths of a second, by instance

constexpr std::uint64_t cut = 3;           // each agent cuts to hundredths of a second by itself
constexpr std::uint64_t wholeSecond = 200; // what the kernel or a record of the contract tells in whole seconds

class TimesTest : public MasterTest
{
  protected:
    std::uint64_t sysUpTime() const { return momentsBelow("1.3.6.1.2.1.1.3").begin()->second; }

    // All that is in the groups of ours.
    Moments moments() const
    {
        Moments all = momentsBelow("1.3.6.1.2.1.4");
        all.merge(momentsBelow("1.3.6.1.2.1.2"));
        all.merge(momentsBelow("1.3.6.1.2.1.31"));
        return all;
    }

    void expectNoneAhead(const Moments &moments) const
    {
        const std::uint64_t now = sysUpTime();
        for (const auto &[instance, moment] : moments) {
            EXPECT_LE(moment, now) << instance;
        }
    }

    void expectChangesAreDated()
    {
        for (const auto &[instance, moment] : moments()) {
            if (instance.starts_with(".1.3.6.1.2.1.4.34.1.8.")) {
                EXPECT_EQ(moment, 0u) << instance << " was there before";
            }
        }
        const std::uint64_t before = sysUpTime();
        network()->run("ip addr add 192.0.2.77/24 dev left; ip -6 addr add 2001:db8::77/64 dev left;"
                       "ip neigh add 192.0.2.88 lladdr 02:00:00:00:00:88 nud permanent dev left;"
                       "ip -6 neigh add 2001:db8::88 lladdr 02:00:00:00:00:88 nud permanent dev left;"
                       "ip link add late type bridge");
        const std::string left = std::to_string(network()->json("ip -j link show dev left")[0]["ifindex"].get<int>());
        Moments now = moments();
        const std::uint64_t after = sysUpTime();
        const std::string ip6 = "2.16.32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.";
        const std::map<std::string, std::uint64_t> changed = {
            {".1.3.6.1.2.1.4.27.0", cut},
            {".1.3.6.1.2.1.4.34.1.8.1.4.192.0.2.77", cut},
            {".1.3.6.1.2.1.4.34.1.9.1.4.192.0.2.77", cut},
            {".1.3.6.1.2.1.4.34.1.8." + ip6 + "119", wholeSecond},
            {".1.3.6.1.2.1.4.34.1.9." + ip6 + "119", wholeSecond},
            {".1.3.6.1.2.1.4.35.1.5." + left + ".1.4.192.0.2.88", wholeSecond},
            {".1.3.6.1.2.1.4.35.1.5." + left + "." + ip6 + "136", wholeSecond},
            {".1.3.6.1.2.1.31.1.5.0", cut},
            {".1.3.6.1.2.1.31.1.6.0", cut},
        };
        for (const auto &[instance, uncertainty] : changed) {
            ASSERT_TRUE(now.contains(instance)) << instance;
            EXPECT_GE(now[instance] + uncertainty, before) << instance;
        }
        for (const auto &[instance, moment] : now) {
            EXPECT_LE(moment, after) << instance;
        }
    }

  private:
    Moments momentsBelow(const std::string &root) const
    {
        Moments found;
        for (const std::string &row : walk("snmpbulkwalk", publicV2, {}, root)) {
            constexpr std::string_view type = " = Timeticks: (";
            if (const std::size_t place = row.find(type); place != std::string::npos) {
                found[row.substr(0, place)] = std::stoull(row.substr(place + type.size()));
            }
        }
        return found;
    }
};

TEST_F(TimesTest, StandAlone)
{
    startAgent(everybody, {"--platform", "linux"});
    expectChangesAreDated();
    stopAgent();
}

TEST_F(TimesTest, AsSubagentTheyAreTheMasters)
{
    startMaster();
    startSubagent("serve all take\n");
    expectChangesAreDated();
    // A master that begins anew begins with 0.
    killMaster();
    startMaster();
    ASSERT_TRUE(eventually([this] { return isThere(interfaceRow); })) << agent().output();
    const Moments all = moments();
    EXPECT_GT(all.size(), 10u);
    expectNoneAhead(all);
    stopSubagent();
}

TEST_F(TimesTest, InsideSnmpdTheyAreItsOwn)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
#endif
    startMaster(std::string("dlmod ipmib ") + IPMIB_SNMPD_OBJECT + "\nipmibServe all take\n");
    expectChangesAreDated();
}

TEST_F(TimesTest, ASimulatedDeviceShowsItsOwnUptime)
{
    constexpr std::uint64_t uptime = 4'000'000'00; // longer than this machine has been up
    const std::string device = "simulated:" + writeFile("device.json", R"({"uptime": 4000000, "interfaces": [
        {"name": "wan", "ifIndex": 1, "down": [{"from": 0.001, "to": 0.002}], "addresses": [
            {"address": "2001:db8::1/64", "created": 1000, "changed": 3999999}],
         "ipv4Addresses": [{"address": "192.0.2.1/24", "created": 2000, "changed": 3999999}],
         "neighbours": [{"address": "2001:db8::2", "updated": 3999998}],
         "ipv4Neighbours": [{"address": "192.0.2.2", "updated": 3999998}]}]})");
    const std::string created = ".1.3.6.1.2.1.4.34.1.8.1.4.192.0.2.1";
    startAgent(everybody, {"--platform", device});
    EXPECT_GE(sysUpTime(), uptime);
    Moments alone = moments();
    EXPECT_EQ(alone[created], 200'000u);
    EXPECT_GE(alone[".1.3.6.1.2.1.2.2.1.9.1"] + cut, uptime);
    expectNoneAhead(alone);
    stopAgent();

    startMaster();
    startSubagent("serve all take\n", {"--platform", device});
    Moments beside = moments();
    EXPECT_EQ(beside.count(created), 1u);
    EXPECT_EQ(beside[created], 0u) << "long before the master's start";
    expectNoneAhead(beside);
    stopSubagent();
}

} // namespace

} // namespace ipmib::e2e
