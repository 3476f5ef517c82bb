// SPDX-License-Identifier: BSD-3-Clause
// Contexts as Debian's snmpd shows them, whose sub-agent ipmibd is, or that has it inside.

#include "e2e/master_under_test.h"
#include "e2e/objects.h"

#include <algorithm>

namespace ipmib::e2e
{
namespace
{

const std::string scopes = "1.3.6.1.2.1.4.30.1.2"; // ipv6InterfaceReasmMaxSize, which the module answers

const std::string fleet = R"({
    "interfaces": [{"name": "own", "ifIndex": 1}],
    "devices": [
        {"name": "core", "scenario": {
            "uptime": 5000,
            "system": {"name": "core-1"},
            "interfaces": [{"name": "up", "ifIndex": 2}, {"name": "down", "ifIndex": 7}]}},
        {"name": "access{n}", "count": 20, "scenario": {"interfaces": [{"name": "lan{n}", "ifIndex": 3}]}}
    ]})";

const std::string coreAccess = R"(com2sec -Cn core coreAlone default forcore
group coreAlone v1 coreAlone
group coreAlone v2c coreAlone
view everything included .1
access coreAlone core any noauth exact everything none none
createUser all SHA "all's auth"
rouser all auth -V everything *
createUser one SHA "one's auth"
rouser one auth -V everything core
)";

// Nobody answers those who may not ask: they need not wait for long.
Words v3(const std::string &user, const std::string &context, const std::string &seconds = "20")
{
    return {"-v3", "-r0", "-t" + seconds,   "-l", "authNoPriv", "-u", user, "-a",
            "SHA", "-A",  user + "'s auth", "-n", context};
}

enum class Way { asSubagent, inside };

class ContextsBesideSnmpd : public MasterTest, public testing::WithParamInterface<Way>
{
  protected:
    void SetUp() override
    {
#ifdef __SANITIZE_ADDRESS__
        if (GetParam() == Way::inside) {
            GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
        }
#endif
        MasterTest::SetUp();
    }

    void startFleet()
    {
        const std::string scenario = "simulated:" + writeFile("fleet.json", fleet);
        if (GetParam() == Way::asSubagent) {
            startMaster(coreAccess);
            startSubagent("", {"--platform", scenario});
        } else {
            startMaster(configurationInside(scenario));
        }
    }
    std::string configurationInside(const std::string &scenario) const
    {
        return coreAccess + "dlmod ipmib " + IPMIB_SNMPD_OBJECT + "\nipmibPlatform " + scenario + "\n";
    }
    // Has the file read anew, without a restart.
    void changeFleet(const std::string &devices)
    {
        const std::string scenario = "simulated:" + writeFile("fleet.json", devices);
        if (GetParam() == Way::asSubagent) {
            reconfigureSubagent("");
        } else {
            reconfigureMaster(configurationInside(scenario));
        }
    }

    std::string get(const Words &who, const std::string &object) const
    {
        const Result result = snmp("snmpget", who, {"-Oqv", object});
        return result.status == 0 ? result.output : "status " + std::to_string(result.status);
    }
    bool eventuallyGet(const Words &who, const std::string &object, const std::string &value) const
    {
        return eventually([&] { return get(who, object) == value; });
    }
};

TEST_P(ContextsBesideSnmpd, EachContextIsADeviceOfItsOwn)
{
    startFleet();
    EXPECT_EQ(get(v3("all", "core"), sysName), "\"core-1\"\n");
    EXPECT_EQ(get(v3("all", "access7"), sysName), "\"access7\"\n");
    for (const char *program : {"snmpwalk", "snmpbulkwalk"}) {
        EXPECT_EQ(walk(program, v3("one", "core"), {}, ifDescr),
                  (Words{".1.3.6.1.2.1.2.2.1.2.2 = STRING: \"up\"", ".1.3.6.1.2.1.2.2.1.2.7 = STRING: \"down\""}));
        EXPECT_EQ(walk(program, {"-v2c", "-c", "forcore"}, {}, scopes).size(), 2u);
        EXPECT_EQ(walk(program, v3("all", "access20"), {}, scopes).size(), 1u);
    }
    EXPECT_EQ(walk("snmpwalk", {"-v1", "-c", "forcore"}, {}, ifDescr).size(), 2u);
    EXPECT_GE(std::stoul(snmp("snmpget", v3("all", "core"), {"-Oqvt", "1.3.6.1.2.1.1.3.0"}).output), 500'000u);
    EXPECT_LT(std::stoul(snmp("snmpget", v3("all", "access1"), {"-Oqvt", "1.3.6.1.2.1.1.3.0"}).output), 500'000u);
    const Words all = walk("snmpbulkwalk", v3("all", "core"), {}, "1.3.6.1.2.1");
    expectIncreasing(all);
    EXPECT_EQ(all.size(), walk("snmpwalk", v3("all", "core"), {}, "1.3.6.1.2.1").size());
}

TEST_P(ContextsBesideSnmpd, NobodySeesAContextThatNoRuleLetsThemSee)
{
    startFleet();
    EXPECT_EQ(get(v3("one", "core"), sysName), "\"core-1\"\n");
    for (const char *program : {"snmpget", "snmpgetnext", "snmpbulkget"}) {
        for (const std::string &object : {sysName, scopes}) {
            for (const char *context : {"access1", ""}) {
                const Result result = snmp(program, v3("one", context, "1"), {object});
                EXPECT_EQ(result.output.find(" = STRING"), std::string::npos) << program << " " << result.output;
                EXPECT_EQ(result.output.find(" = Gauge32"), std::string::npos) << program << " " << result.output;
            }
        }
    }
    EXPECT_NE(snmp("snmpget", v3("all", "nowhere", "1"), {sysName}).status, 0);
    EXPECT_EQ(get({"-v2c", "-c", "public"}, ifDescr + ".7").find("down"), std::string::npos);
}

TEST_P(ContextsBesideSnmpd, DevicesComeAndGo)
{
    startFleet();
    EXPECT_EQ(get(v3("all", "access1"), sysName), "\"access1\"\n");
    changeFleet(R"({"devices": [
        {"name": "core", "scenario": {"system": {"name": "core-2"}, "interfaces": [{"name": "new", "ifIndex": 2}]}},
        {"name": "later", "scenario": {"interfaces": [{"name": "first", "ifIndex": 9}]}}]})");
    EXPECT_TRUE(eventuallyGet(v3("all", "later", "1"), ifDescr + ".9", "\"first\"\n"));
    EXPECT_TRUE(eventuallyGet(v3("all", "core"), sysName, "\"core-2\"\n"));
    EXPECT_EQ(get(v3("all", "access1", "1"), sysName).find("access1"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Ways, ContextsBesideSnmpd, testing::Values(Way::asSubagent, Way::inside),
                         [](const auto &way) { return way.param == Way::asSubagent ? "AsSubagent" : "Inside"; });

using ContextsInsideSnmpd = ContextsBesideSnmpd;

TEST_P(ContextsInsideSnmpd, CommunitiesOfContexts)
{
    startMaster(configurationInside("simulated:" + writeFile("fleet.json", fleet)) +
                "ipmibContextCommunity lab 127.0.0.1 access1*\nipmibContextCommunity elsewhere 192.0.2.9\n");
    const auto community = [](const std::string &name) { return Words{"-v2c", "-r0", "-t1", "-c", name}; };
    EXPECT_EQ(walk("snmpbulkwalk", community("lab@access12"), {}, ifDescr),
              (Words{".1.3.6.1.2.1.2.2.1.2.3 = STRING: \"lan12\""}));
    for (const char *other : {"lab", "lab@core", "lab@nowhere", "elsewhere@access12", "contextcommunity1"}) {
        EXPECT_NE(snmp("snmpget", community(other), {sysName}).status, 0) << other;
    }
    EXPECT_EQ(get(community("public"), sysName).find("access"), std::string::npos);
    reconfigureMaster(""); // unloads it, and snmpd checks access by itself again
    EXPECT_NE(snmp("snmpget", community("lab@access12"), {sysName}).status, 0);
    EXPECT_EQ(snmp("snmpget", community("public"), {sysName}).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Ways, ContextsInsideSnmpd, testing::Values(Way::inside),
                         [](const auto &) { return "Inside"; });

using ContextsOfASubagent = MasterTest;

TEST_F(ContextsOfASubagent, AreThereAgainWhenTheMasterIs)
{
    const Words options = {"--platform", "simulated:" + writeFile("fleet.json", fleet)};
    startMaster(coreAccess);
    startSubagent("", options);
    EXPECT_EQ(walk("snmpwalk", v3("all", "access3"), {}, ifDescr).size(), 1u);
    killMaster();
    startMaster(coreAccess);
    EXPECT_TRUE(eventually([&] {
        return snmp("snmpget", v3("all", "access3"), {"-Oqv", ifDescr + ".3"}).output == "\"lan3\"\n";
    })) << agent().output();
    stopSubagent();
    EXPECT_EQ(snmp("snmpget", v3("all", "access3", "1"), {ifDescr + ".3"}).output.find("lan3"), std::string::npos);
}

} // namespace
} // namespace ipmib::e2e
