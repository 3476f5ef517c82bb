// SPDX-License-Identifier: BSD-3-Clause
// What goes wrong at the address of one device of a fleet goes wrong neither at another's nor at the agent's.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"
#include "e2e/raw_socket.h"

#include <functional>
#include <iterator>

namespace ipmib::e2e
{
namespace
{

const std::string faultsAccess = R"(rocommunity public 127.0.0.1
contextcommunity lab 127.0.0.1
contextcommunity public 127.0.0.1
createUser all SHA "all's auth"
rouser all auth -V everything *
rouser all auth -V everything
view everything included .1
)";
const Words everyDeviceV3 = {"-v3", "-l", "authNoPriv", "-u", "all", "-a", "SHA", "-A", "all's auth"};

class AddressFaultsTest : public AgentTest
{
  protected:
    void startFleet()
    {
        writeFleet("", {{"sick", hosts[0]}, {"well", hosts[1]}});
        startProgram({agentProgram, "-f", "-Lo", "-C", "-c", writeFile("test.conf", faultsAccess), "--device-socket",
                      path("socket"), "--platform", "simulated:" + path("fleet.json"), address()});
    }
    void writeFleet(const std::string &members, const std::vector<std::pair<std::string, std::string>> &devices) const
    {
        std::string text;
        for (const auto &[name, host] : devices) {
            text += (text.empty() ? "" : ",") + std::string(R"({"name": ")") + name + R"(", "listen": ")" +
                    (host.find(':') == std::string::npos ? where(host) : "udp:" + host) + R"(", "scenario": {)" +
                    members + R"("interfaces": [{"name": "a", "ifIndex": 2}, {"name": "b", "ifIndex": 3}]}})";
        }
        writeFile("fleet.json",
                  R"({"system": {"name": "own"}, "interfaces": [{"name": "a", "ifIndex": 2}], "devices": [)" + text +
                      "]}");
    }
    std::string where(const std::string &host) const { return "udp:" + host + ":" + std::to_string(port()); }

    void change(const std::string &device, const std::string &fault, const std::string &state) const
    {
        const Result result =
            run({controlProgram, "--socket", path("socket"), "--context", device, "set-device", "fault", fault, state},
                environment());
        EXPECT_EQ(result.status, 0) << result.errors;
    }
    Result ask(const std::string &program, const std::string &host, const Words &who, const Words &arguments) const
    {
        Words words = {program};
        words.insert(words.end(), who.begin(), who.end());
        words.push_back(where(host));
        words.insert(words.end(), arguments.begin(), arguments.end());
        return run(words, environment());
    }
    // As a client that waits is answered where all is well.
    void expectWell(const std::string &host, const std::string &name) const
    {
        for (const Words &version : {publicV2, everyDeviceV3}) {
            Words patient = version;
            patient.insert(patient.end(), {"-r0", "-t20", "-Oqv"});
            const Result result = ask("snmpget", host, patient, {sysName, hopLimit});
            EXPECT_EQ(result.output, "\"" + name + "\"\n64\n") << version[0] << " at " << host << ": " << result.errors;
        }
        Words patient = publicV2;
        patient.insert(patient.end(), {"-r0", "-t20"});
        const Result walk = ask("snmpwalk", host, patient, {ifDescr});
        EXPECT_EQ(walk.status, 0) << host << ": " << walk.output << walk.errors;
    }
    // What a client sees that waits for a second.
    std::string seen(const std::string &host, const Words &version, const std::string &program = "snmpget",
                     const std::string &object = hopLimit) const
    {
        Words hasty = version;
        hasty.insert(hasty.end(), {"-r0", "-t1", "-On"});
        const Result result = ask(program, host, hasty, {object});
        return result.output + result.errors;
    }

    static inline const Words hosts = {"127.0.0.2", "127.0.0.3"};
};

TEST_F(AddressFaultsTest, AreThoseOfTheDeviceInEveryVersion)
{
    startFleet();
    for (const auto &[fault, state, said] : {std::tuple("silence", "on", "Timeout"),
                                             {"delay", R"({"seconds": 3600})", "Timeout"},
                                             {"truncate", R"({"octets": 12})", "Timeout"},
                                             {"genErr", "on", "(genError)"},
                                             {"tooBig", "on", "(tooBig)"},
                                             {"wrongType", "on", " = STRING: \"42\""}}) {
        change("sick", fault, state);
        for (const Words &version : {publicV2, everyDeviceV3}) {
            const std::string text = seen(hosts[0], version);
            EXPECT_NE(text.find(said), std::string::npos) << fault << " over " << version[0] << ": " << text;
        }
        expectWell(hosts[1], "well");
        expectWell("127.0.0.1", "own");
        change("sick", fault, "off");
        expectWell(hosts[0], "sick");
    }
    change("sick", "notIncreasing", "on");
    EXPECT_NE(seen(hosts[0], publicV2, "snmpwalk", ifDescr).find("OID not increasing"), std::string::npos);
    expectWell(hosts[1], "well");
    stopAgent();
}

TEST_F(AddressFaultsTest, OfTheAgentsOwnAreSeenAtNoDevice)
{
    startFleet();
    for (const auto &[fault, state] : {std::pair("silence", "on"),
                                       {"delay", R"({"seconds": 3600})"},
                                       {"truncate", R"({"octets": 12})"},
                                       {"genErr", "on"}}) {
        change("", fault, state);
        expectWell(hosts[0], "sick");
        expectWell(hosts[1], "well");
        EXPECT_EQ(seen("127.0.0.1", publicV2).find("INTEGER: 64"), std::string::npos);
        change("", fault, "off");
    }
    expectWell("127.0.0.1", "own");
    stopAgent();
}

const std::string hopLimitRequest(std::begin(getHopLimit), std::end(getHopLimit));

TEST_F(AddressFaultsTest, TheSecondOfTwoAnswersComesFromTheSameAddress)
{
    startFleet();
    change("sick", "duplicate", R"({"seconds": 0.1})");
    const RawSocket client;
    client.sendTo(port(), hopLimitRequest, hosts[0]);
    for (int i = 0; i < 2; ++i) {
        std::string from;
        EXPECT_FALSE(client.next(from).empty());
        EXPECT_EQ(from, hosts[0] + ":" + std::to_string(port()));
    }
    stopAgent();
}

// Its late answers are not sent where another device has been given an address since.
TEST_F(AddressFaultsTest, ADeviceThatHasGoneAnswersFromNoOthersAddress)
{
    const std::string third = "127.0.0.1:" + std::to_string(port() + 1);
    startFleet();
    change("sick", "delay", R"({"seconds": 2})");
    const RawSocket early;
    early.sendTo(port(), hopLimitRequest, hosts[0]);
    expectWell(hosts[1], "well"); // by then that one has been taken
    writeFleet(R"("faults": {"delay": {"seconds": 2}}, )", {{"well", hosts[1]}, {"new", third}});
    agent().signal(SIGHUP);
    EXPECT_TRUE(notification().starts_with("RELOADING=1\n"));
    EXPECT_EQ(notification(), "READY=1");
    const RawSocket later;
    later.sendTo(static_cast<std::uint16_t>(port() + 1), hopLimitRequest);
    std::string from;
    EXPECT_FALSE(later.next(from).empty()) << "by now what was asked for before is due, too";
    EXPECT_EQ(from, third);
    if (!early.isEmpty()) { // it was due before the device went
        early.next(from);
        EXPECT_EQ(from, hosts[0] + ":" + std::to_string(port()));
    }
    stopAgent();
}

} // namespace
} // namespace ipmib::e2e
