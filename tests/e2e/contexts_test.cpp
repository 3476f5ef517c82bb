// SPDX-License-Identifier: BSD-3-Clause
// Contexts: many simulated devices behind one agent, and who may ask in which.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"

#include <algorithm>
#include <csignal>
#include <deque>

namespace ipmib::e2e
{
namespace
{

const std::string sysDescr = "1.3.6.1.2.1.1.1.0";

const std::string fleetOfContexts = R"({
    "interfaces": [{"name": "own", "ifIndex": 1}],
    "devices": [
        {"name": "core", "scenario": {
            "uptime": 5000,
            "system": {"name": "core-1", "description": "A core router", "objectId": "1.3.6.1.4.1.8072.9999"},
            "interfaces": [{"name": "up", "ifIndex": 2, "addresses": [{"address": "2001:db8::1/64"}]},
                           {"name": "down", "ifIndex": 7}]}},
        {"name": "access{n}", "count": 40, "scenario": {
            "interfaces": [{"name": "lan{n}", "ifIndex": 3,
                            "ipv4Addresses": [{"address": "10.{n/256}.{n%256}.1/24"}]}]}}
    ]})";

const std::string contextsAccess = R"(rocommunity public 127.0.0.1
contextcommunity lab default
contextcommunity part 127.0.0.1 access1*
com2sec -Cn core oneDevice default justcore
group oneDevice v2c oneDevice
view everything included .1
access oneDevice core any noauth exact everything none none
createUser all SHA "all's auth"
rouser all auth -V everything *
createUser one SHA "one's auth"
rouser one auth -V everything core
)";

// Nobody answers those who may not ask: they need not wait for long.
const std::string forRefused = "1";

Words ofCommunity(const std::string &community, const std::string &seconds = "20")
{
    return {"-v2c", "-r0", "-t" + seconds, "-c", community};
}

Words ofUser(const std::string &user, const std::string &context, const std::string &seconds = "20")
{
    return {"-v3", "-r0", "-t" + seconds,   "-l", "authNoPriv", "-u", user, "-a",
            "SHA", "-A",  user + "'s auth", "-n", context};
}

class ContextTest : public AgentTest
{
  protected:
    void startFleet(const std::string &configuration = contextsAccess, const std::string &scenario = fleetOfContexts)
    {
        startProgram({agentProgram, "-f", "-Lo", "-C", "-c", writeFile("test.conf", configuration), "--platform",
                      "simulated:" + writeFile("fleet.json", scenario), address()});
    }
    std::string get(const Words &who, const std::string &object) const
    {
        const Result result = snmp("snmpget", who, {"-Oqv", object});
        return result.status == 0 ? result.output : "status " + std::to_string(result.status);
    }
};

TEST_F(ContextTest, EachContextIsADeviceOfItsOwn)
{
    startFleet();
    EXPECT_EQ(get(ofUser("all", "core"), sysName), "\"core-1\"\n");
    EXPECT_EQ(get(ofUser("all", "core"), sysDescr), "\"A core router\"\n");
    EXPECT_EQ(get(ofUser("all", "access7"), sysName), "\"access7\"\n");
    EXPECT_EQ(walk("snmpwalk", ofUser("all", "core"), {}, ifDescr),
              (Words{".1.3.6.1.2.1.2.2.1.2.2 = STRING: \"up\"", ".1.3.6.1.2.1.2.2.1.2.7 = STRING: \"down\""}));
    EXPECT_EQ(walk("snmpbulkwalk", ofCommunity("lab@access40"), {}, ifDescr),
              (Words{".1.3.6.1.2.1.2.2.1.2.3 = STRING: \"lan40\""}));
    EXPECT_EQ(walk("snmpbulkwalk", ofCommunity("lab@access12"), {}, ipAddressIfIndex),
              (Words{".1.3.6.1.2.1.4.34.1.3.1.4.10.0.12.1 = INTEGER: 3"}));
    EXPECT_EQ(walk("snmpwalk", publicV2, {}, ifDescr), (Words{".1.3.6.1.2.1.2.2.1.2.1 = STRING: \"own\""}));
    stopAgent();
}

TEST_F(ContextTest, TablesOfTheModuleAreOfTheContextInEveryKindOfRequest)
{
    startFleet();
    const std::string scopes = "1.3.6.1.2.1.4.30.1.2"; // ipv6InterfaceReasmMaxSize, which the module answers
    for (const char *program : {"snmpwalk", "snmpbulkwalk"}) {
        EXPECT_EQ(walk(program, ofCommunity("lab@core"), {}, scopes).size(), 2u);
        EXPECT_EQ(walk(program, ofUser("all", "access3"), {}, scopes).size(), 1u);
        EXPECT_EQ(walk(program, publicV2, {}, scopes).size(), 1u);
    }
    // Walks side by side: each goes on where it stood, in its own context.
    const std::string asked[] = {scopes, scopes + ".2"};
    EXPECT_EQ(get(ofUser("all", "core"), asked[1]), get(ofCommunity("lab@core"), asked[1]));
    EXPECT_NE(snmp("snmpgetnext", ofCommunity("lab@core"), {asked[1]}).output.find(scopes + ".7 "), std::string::npos);
    EXPECT_NE(snmp("snmpgetnext", ofCommunity("lab@access3"), {asked[1]}).output.find(scopes + ".3 "),
              std::string::npos);
    EXPECT_NE(snmp("snmpgetnext", ofCommunity("lab@core"), {asked[1]}).output.find(scopes + ".7 "), std::string::npos);
    stopAgent();
}

TEST_F(ContextTest, NobodySeesAContextThatNoRuleLetsThemSee)
{
    startFleet();
    EXPECT_EQ(get(ofUser("one", "core"), sysName), "\"core-1\"\n");
    EXPECT_EQ(get(ofUser("one", "core"), ifDescr + ".2"), "\"up\"\n");
    for (const char *program : {"snmpget", "snmpgetnext", "snmpbulkget"}) {
        for (const char *object : {"1.3.6.1.2.1.1.5.0", "1.3.6.1.2.1.2.2.1.2"}) {
            for (const char *context : {"access1", ""}) {
                const Result result = snmp(program, ofUser("one", context, forRefused), {object});
                EXPECT_EQ(result.output.find("STRING"), std::string::npos) << program << " " << result.output;
            }
        }
    }
    EXPECT_NE(snmp("snmpget", ofCommunity("public@core", forRefused), {sysName}).status, 0);
    EXPECT_NE(snmp("snmpget", ofCommunity("part@core", forRefused), {sysName}).status, 0);
    EXPECT_NE(snmp("snmpget", ofCommunity("lab", forRefused), {sysName}).status, 0);
    EXPECT_NE(snmp("snmpget", ofCommunity("contextcommunity1", forRefused), {sysName}).status, 0)
        << "what the library knows a line by";
    EXPECT_NE(snmp("snmpget", {"-v1", "-r0", "-t1", "-c", "justcore"}, {sysName}).status, 0) << "let in over v2c alone";
    EXPECT_EQ(get(ofCommunity("justcore"), sysName), "\"core-1\"\n");
    EXPECT_EQ(get(ofCommunity("part@access11"), sysName), "\"access11\"\n");
    EXPECT_NE(snmp("snmpget", ofCommunity("part@access2", forRefused), {sysName}).status, 0);
    EXPECT_NE(snmp("snmpget", ofUser("all", "nowhere", forRefused), {sysName}).status, 0);
    stopAgent();
}

TEST_F(ContextTest, ManagersFindTheContexts)
{
    startFleet();
    const Words found = walk("snmpbulkwalk", publicV2, {"-Oqv"}, vacmContextName);
    EXPECT_EQ(found.size(), 42u);
    EXPECT_EQ(std::ranges::count(found, "\"access40\""), 1);
    EXPECT_EQ(std::ranges::count(found, "\"\""), 1) << "the one without a name";
    stopAgent();
}

TEST_F(ContextTest, EachHasASysUpTimeOfItsOwn)
{
    startFleet();
    const std::string sysUpTime = "1.3.6.1.2.1.1.3.0";
    const auto ticks = [&](const std::string &context) {
        return std::stoul(snmp("snmpget", ofCommunity("lab@" + context), {"-Oqvt", sysUpTime}).output);
    };
    const unsigned long core = ticks("core");
    EXPECT_GE(core, 500'000u);
    const unsigned long other = ticks("access1");
    EXPECT_LT(other, 500'000u);
    EXPECT_GE(ticks("core"), core);
    stopAgent();
}

TEST_F(ContextTest, AFileThatIsReadAgainBringsDevicesAndTakesThem)
{
    startFleet();
    writeFile("fleet.json", R"({"devices": [
        {"name": "core", "scenario": {"system": {"name": "core-2"}, "interfaces": [{"name": "new", "ifIndex": 2}]}},
        {"name": "later", "scenario": {"interfaces": [{"name": "first", "ifIndex": 9}]}}]})");
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    EXPECT_EQ(get(ofCommunity("lab@core"), sysName), "\"core-2\"\n");
    EXPECT_EQ(get(ofUser("all", "later"), ifDescr + ".9"), "\"first\"\n");
    EXPECT_EQ(get(ofCommunity("lab@later"), ifDescr + ".9"), "\"first\"\n");
    EXPECT_NE(snmp("snmpget", ofUser("all", "access1", forRefused), {sysName}).status, 0);
    EXPECT_EQ(walk("snmpwalk", publicV2, {"-Oqv"}, vacmContextName).size(), 3u);
    stopAgent();
}

TEST_F(ContextTest, WhatCannotBeBegunIsSaidAndTheOthersAreServed)
{
    startFleet(contextsAccess + "context extra nothing\ncontexts nothing\ncontext lonely\n");
    EXPECT_EQ(get(ofCommunity("lab@core"), sysName), "\"core-1\"\n");
    const std::string text = agent().output() + agent().errors();
    EXPECT_NE(text.find("context extra: "), std::string::npos) << text;
    EXPECT_NE(text.find(" has no device \"nothing\"\n"), std::string::npos) << text;
    EXPECT_NE(text.find("contexts nothing: platform simulated has the contexts of its scenario, not \"nothing\"\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("context: needs a name and what the platform shall show under it"), std::string::npos) << text;
    stopAgent();
}

TEST_F(ContextTest, ADeviceOfAPlatformFromBeforeTheInstancesIsServedAsEver)
{
    startAgent(everybody + "context other thing\n"); // the scripted one has no instances
    EXPECT_NE(agent().output().find("context other: this platform has one device and no other\n"), std::string::npos);
    EXPECT_EQ(snmp("snmpget", publicV2, {"1.3.6.1.2.1.4.26.0"}).output, ".1.3.6.1.2.1.4.26.0 = INTEGER: 64\n");
    EXPECT_TRUE(walk("snmpwalk", publicV2, {}, vacmContextName).empty());
    stopAgent();
}

// Devices that are asked at addresses of their own, one of them over IPv6, and one that is not.
class DeviceAddressTest : public ContextTest
{
  protected:
    void startDevices(const std::string &more = "")
    {
        const auto plus = [this](int add) { return std::to_string(port() + add); };
        startFleet(contextsAccess + more, R"({"devices": [
            {"name": "core", "listen": "udp:127.0.0.1:)" +
                                              plus(1) + R"(", "scenario": {"interfaces": [{"name": "up"}]}},
            {"name": "six", "listen": "udp6:[::1]:)" +
                                              plus(2) + R"(", "scenario": {"interfaces": []}},
            {"name": "access{n}", "count": 3, "listen": "udp:127.0.0.{n+1}:)" +
                                              plus(3) + R"(",
             "scenario": {"interfaces": [{"name": "lan{n}", "ifIndex": 3}]}},
            {"name": "shy", "scenario": {"interfaces": []}}]})");
    }
    // One of net-snmp's programs, at another address than the agent's.
    static Words wordsAt(const std::string &where, const std::string &program, const Words &who, const Words &arguments)
    {
        Words words = {program};
        words.insert(words.end(), who.begin(), who.end());
        words.insert(words.end(), {"-On", where});
        words.insert(words.end(), arguments.begin(), arguments.end());
        return words;
    }
    Result at(const std::string &where, const std::string &program, const Words &who, const Words &arguments) const
    {
        return run(wordsAt(where, program, who, arguments), environment());
    }
    std::string core() const { return "udp:127.0.0.1:" + std::to_string(port() + 1); }
    std::string six() const { return "udp6:[::1]:" + std::to_string(port() + 2); }
    std::string switchAt(int n) const
    {
        return "udp:127.0.0." + std::to_string(n + 1) + ":" + std::to_string(port() + 3);
    }
    std::string nameAt(const std::string &where, const Words &who) const
    {
        return at(where, "snmpget", who, {"-Oqv", sysName}).output;
    }
};

TEST_F(DeviceAddressTest, EachIsAskedAtItsOwnWithoutAName)
{
    startDevices();
    for (int n = 1; n <= 3; ++n) {
        const std::string name = "\"access" + std::to_string(n) + "\"\n";
        EXPECT_EQ(nameAt(switchAt(n), ofCommunity("lab")), name);
        EXPECT_EQ(nameAt(switchAt(n), ofUser("all", "")), name);
        EXPECT_EQ(nameAt(switchAt(n), ofUser("all", "access" + std::to_string(n))), name);
        for (const char *program : {"snmpwalk", "snmpbulkwalk"}) {
            EXPECT_EQ(at(switchAt(n), program, ofCommunity("lab"), {ifDescr}).output,
                      "." + ifDescr + ".3 = STRING: \"lan" + std::to_string(n) + "\"\n");
        }
    }
    EXPECT_EQ(nameAt(core(), {"-v1", "-r0", "-t20", "-c", "lab"}), "\"core\"\n");
    EXPECT_EQ(nameAt(core(), ofUser("one", "")), "\"core\"\n");
    EXPECT_EQ(nameAt(six(), ofCommunity("lab")), "\"six\"\n");
    EXPECT_EQ(nameAt(six(), ofUser("all", "")), "\"six\"\n");
    EXPECT_EQ(get(ofCommunity("lab@access2"), sysName), "\"access2\"\n") << "at the agent's address as ever";
    stopAgent();
}

TEST_F(DeviceAddressTest, LogicalEntitiesAreOneRowForEach)
{
    startDevices();
    const std::string entry = "1.3.6.1.2.1.47.1.2.1.1";
    const Words names = walk("snmpbulkwalk", publicV2, {"-Oqv"}, entry + ".8");
    EXPECT_EQ(names.size(), 6u);
    const auto row = static_cast<std::size_t>(std::ranges::find(names, "\"access2\"") - names.begin());
    ASSERT_LT(row, names.size());
    const auto column = [&](const std::string &number) {
        return walk("snmpwalk", publicV2, {"-Oqvx"}, entry + "." + number).at(row);
    };
    char address[32];
    std::snprintf(address, sizeof address, "\"7F 00 00 03 %02X %02X \"", (port() + 3) / 256, (port() + 3) % 256);
    EXPECT_EQ(column("3"), ".1.3.6.1.2.1");
    EXPECT_EQ(column("4"), "\"\"") << "no secrets";
    EXPECT_EQ(column("5"), address);
    EXPECT_EQ(column("6"), ".1.3.6.1.6.1.1");
    EXPECT_NE(snmp("snmpgetnext", publicV2, {entry + ".7"}).output.find("Hex-STRING: 80 00"), std::string::npos);
    EXPECT_EQ(
        std::ranges::count(walk("snmpwalk", publicV2, {}, entry), '.', [](const std::string &line) { return line[0]; }),
        7 * 6);
    EXPECT_EQ(std::ranges::count(walk("snmpwalk", publicV2, {"-Oqv"}, entry + ".6"), ".0.0"), 1)
        << "without an address";
    EXPECT_EQ(std::ranges::count(walk("snmpwalk", publicV2, {"-Oqv"}, entry + ".6"), ".1.3.6.1.2.1.100.1.2"), 1);
    EXPECT_EQ(snmp("snmpgetnext", ofCommunity("lab@core"), {entry}).output.find(" = No more variables"),
              entry.size() + 1);
    stopAgent();
}

TEST_F(DeviceAddressTest, NothingElseIsThere)
{
    startDevices();
    std::deque<Command> asked; // all at once, since most of them wait for nothing
    for (const char *program : {"snmpgetnext", "snmpbulkget"}) {
        for (const Words &who : {ofUser("one", "", forRefused), ofUser("one", "core", forRefused)}) {
            asked.emplace_back(wordsAt(switchAt(1), program, who, {sysName}), environment());
        }
    }
    asked.emplace_back(wordsAt(switchAt(1), "snmpget", ofUser("all", "core", forRefused), {sysName}), environment());
    for (const char *other : {"public", "lab@core", "lab@access1", "contextcommunity1"}) {
        asked.emplace_back(wordsAt(switchAt(2), "snmpget", ofCommunity(other, forRefused), {sysName}), environment());
    }
    for (Command &each : asked) {
        each.wait();
        EXPECT_EQ(each.output().find("STRING"), std::string::npos) << each.output();
    }
    EXPECT_EQ(nameAt(switchAt(1), ofCommunity("part")), "\"access1\"\n");
    EXPECT_EQ(nameAt(core(), ofCommunity("justcore")), "\"core\"\n");
    EXPECT_EQ(at(switchAt(1), "snmpset", ofCommunity("lab"), {sysName, "s", "x"}).status, 2);
    EXPECT_EQ(nameAt(switchAt(1), ofCommunity("lab")), "\"access1\"\n");
    stopAgent();
}

TEST_F(DeviceAddressTest, AddressesComeAndGoWithTheirDevices)
{
    startDevices();
    writeFile("fleet.json", R"({"devices": [
        {"name": "core", "listen": ")" +
                                switchAt(1) + R"(", "scenario": {"interfaces": []}},
        {"name": "wrong", "listen": "tcp:127.0.0.1:9", "scenario": {"interfaces": []}},
        {"name": "taken", "listen": ")" +
                                switchAt(1) + R"(", "scenario": {"interfaces": []}}]})");
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    EXPECT_EQ(nameAt(switchAt(1), ofCommunity("lab")), "\"core\"\n");
    EXPECT_EQ(nameAt(switchAt(2), ofCommunity("lab", forRefused)), "");
    EXPECT_EQ(nameAt(core(), ofCommunity("lab", forRefused)), "");
    EXPECT_EQ(get(ofCommunity("lab@taken"), sysName), "\"taken\"\n");
    const std::string text = agent().output();
    EXPECT_NE(text.find("context wrong: cannot listen on tcp:127.0.0.1:9: the address of a device has to be of UDP\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("context taken: cannot listen on " + switchAt(1) + ": Address already in use\n"),
              std::string::npos)
        << text;
    stopAgent();
}

} // namespace
} // namespace ipmib::e2e
