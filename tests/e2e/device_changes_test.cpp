// SPDX-License-Identifier: BSD-3-Clause
// Devices that misbehave on purpose and are changed while they run, as real clients meet them.

#include "e2e/agent_under_test.h"
#include "e2e/objects.h"
#include "e2e/raw_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace ipmib::e2e
{
namespace
{

const std::string sysUpTime = "1.3.6.1.2.1.1.3.0";
const std::string ifOperStatus = "1.3.6.1.2.1.2.2.1.8.2";
const std::string ifHCInOctets = "1.3.6.1.2.1.31.1.1.1.6.2";

const std::string deviceInterfaces = R"("interfaces": [{"name": "lo", "ifIndex": 1}, {"name": "eth0", "ifIndex": 2,
    "counters": {"ipv6": {"inOctets": {"start": 1000}}}}, {"name": "eth1", "ifIndex": 3}])";

const std::string changesAccess = R"(rocommunity public 127.0.0.1
contextcommunity lab 127.0.0.1
createUser all SHA "all's auth"
rouser all auth -V everything *
view everything included .1
)";

class DeviceTest : public AgentTest
{
  protected:
    // A device with these members beside its interfaces.
    void startDevice(const std::string &members = "", const std::string &configuration = changesAccess)
    {
        const std::string scenario = "{" + deviceInterfaces + (members.empty() ? "" : ", " + members) + "}";
        startProgram({agentProgram, "-f", "-Lo", "-C", "-c", writeFile("test.conf", configuration), "--device-socket",
                      path("socket"), "--platform", "simulated:" + writeFile("device.json", scenario), address()});
    }
    Result change(const Words &words, const std::string &context = "") const
    {
        Words all = {controlProgram, "--socket", path("socket"), "--context", context, "set-device"};
        all.insert(all.end(), words.begin(), words.end());
        return run(all, environment());
    }
    void mustChange(const Words &words, const std::string &context = "") const
    {
        const Result result = change(words, context);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
    }
    Words who(const std::string &community = "public", const std::string &version = "-v2c") const
    {
        return {version, "-r0", "-t20", "-c", community};
    }
    bool isSilent(const std::string &community = "public") const
    {
        const Result result = snmp("snmpget", {"-v2c", "-r0", "-t1", "-c", community}, {hopLimit});
        return result.errors.find("Timeout") != std::string::npos;
    }
    std::string get(const std::string &object, const std::string &community = "public") const
    {
        const Result result = snmp("snmpget", who(community), {"-Oqv", object});
        return result.status == 0 ? result.output : result.errors;
    }
    std::string walkErrors(const std::string &program) const
    {
        const Result result = snmp(program, who(), {ifDescr});
        EXPECT_NE(result.status, 0) << result.output;
        return result.errors;
    }
};

const char *const devicesMember = R"("devices": [
    {"name": "quiet", "scenario": {"faults": {"silence": true}, "interfaces": [{"name": "a", "ifIndex": 2}]}},
    {"name": "sw{n}", "count": 3, "scenario": {"interfaces": [{"name": "up{n}", "ifIndex": 2}]}}])";

TEST_F(DeviceTest, ASilentDeviceIsSilentAloneAndUntilItIsSwitchedOff)
{
    startDevice(devicesMember);
    EXPECT_TRUE(isSilent("lab@quiet"));
    EXPECT_EQ(get(hopLimit, "lab@sw1"), "64\n");
    EXPECT_EQ(get(hopLimit), "64\n");
    mustChange({"fault", "silence", "off"}, "quiet");
    EXPECT_EQ(get(hopLimit, "lab@quiet"), "64\n");
    mustChange({"fault", "silence", "on"}, "*");
    EXPECT_TRUE(isSilent("lab@sw3"));
    EXPECT_TRUE(isSilent());
    mustChange({"fault", "silence", "off"}, "sw*");
    EXPECT_EQ(get(hopLimit, "lab@sw3"), "64\n");
    stopAgent();
}

TEST_F(DeviceTest, ErrorsAreThoseThatTheClientIsToldOf)
{
    startDevice();
    for (const auto &[fault, said] : {std::pair("genErr", "(genError)"), std::pair("tooBig", "(tooBig)")}) {
        mustChange({"fault", fault, "on"});
        for (const char *version : {"-v1", "-v2c"}) {
            const Result result = snmp("snmpget", who("public", version), {hopLimit});
            EXPECT_NE((result.output + result.errors).find(said), std::string::npos) << result.output << result.errors;
        }
        mustChange({"fault", fault, "off"});
    }
    EXPECT_EQ(get(hopLimit), "64\n");
    stopAgent();
}

TEST_F(DeviceTest, AWalkThatDoesNotIncreaseIsNoticed)
{
    startDevice(R"("faults": {"notIncreasing": true})");
    EXPECT_NE(walkErrors("snmpwalk").find("Error: OID not increasing"), std::string::npos);
    EXPECT_NE(walkErrors("snmpbulkwalk").find("Error: OID not increasing"), std::string::npos);
    EXPECT_EQ(get(hopLimit), "64\n") << "nothing ascends in a GET";
    stopAgent();
}

TEST_F(DeviceTest, ValuesOfTheWrongTypeAndTruncatedPacketsArrive)
{
    startDevice(R"("faults": {"wrongType": true})");
    EXPECT_EQ(snmp("snmpget", who(), {"-On", hopLimit}).output.find("." + hopLimit + " = STRING: \"42\""), 0u);
    mustChange({R"({"faults": {"wrongType": false, "truncate": {"octets": 12}}})"});
    EXPECT_TRUE(isSilent()) << "the client reads nothing out of it";
    mustChange({"fault", "truncate", "off"});
    EXPECT_EQ(get(hopLimit), "64\n");
    stopAgent();
}

class RawClient
{
  public:
    explicit RawClient(std::uint16_t port) : port_(port) {}

    // A GET of ipv6IpDefaultHopLimit.0.
    void ask(char number) const
    {
        const char request[] = "\x30\x26\x02\x01\x01\x04\x06public\xA0\x19\x02\x01\x00\x02\x01\x00\x02\x01\x00"
                               "\x30\x0E\x30\x0C\x06\x08\x2B\x06\x01\x02\x01\x04\x1A\x00\x05\x00";
        std::string message(request, sizeof request - 1);
        message[17] = number;
        socket_.sendTo(port_, message);
    }
    // The number of the request that the next answer is for.
    int answer() const
    {
        const std::string message = socket_.next();
        return message.size() < 18 ? -1 : message[17];
    }

  private:
    std::uint16_t port_;
    RawSocket socket_;
};

TEST_F(DeviceTest, AnswersThatComeTwiceOrLateHoldNobodyUp)
{
    startDevice(R"("faults": {"duplicate": {"seconds": 0.1}})");
    const RawClient client(port());
    client.ask(1);
    EXPECT_EQ(client.answer(), 1);
    EXPECT_EQ(client.answer(), 1);
    mustChange({R"({"faults": {"duplicate": false, "delay": {"seconds": 3600}}})"});
    client.ask(2);
    EXPECT_TRUE(isSilent()) << "who waits for a second gives up";
    mustChange({"fault", "delay", "off"});
    client.ask(3);
    EXPECT_EQ(client.answer(), 3) << "nobody waits behind the one that is late";
    mustChange({"fault", "delay", R"({"seconds": 0.1})"});
    client.ask(4);
    EXPECT_EQ(client.answer(), 4);
    stopAgent();
}

TEST_F(DeviceTest, ADeviceThatBootsAgainBeginsAnew)
{
    startDevice(R"("uptime": 500000)");
    const auto upTime = [&] { return std::stoul(snmp("snmpget", who(), {"-Oqvt", sysUpTime}).output); };
    const auto engineBoots = [&] { // as the client finds them out
        const std::string told = snmp("snmpget",
                                      {"-Dlcd_set_enginetime", "-v3", "-r0", "-t20", "-l", "authNoPriv", "-u", "all",
                                       "-a", "SHA", "-A", "all's auth"},
                                      {hopLimit})
                                     .errors;
        const std::size_t at = told.rfind("boots=");
        return at == std::string::npos ? -1 : std::stol(told.substr(at + 6));
    };
    const long boots = engineBoots();
    EXPECT_GE(boots, 1);
    EXPECT_GE(upTime(), 50'000'000u);
    mustChange({"line", "eth0", "down"});
    mustChange({"counter", "eth0", "ipv6.inOctets", "77"});
    EXPECT_EQ(get(ifHCInOctets), "77\n");
    mustChange({"reboot"});
    EXPECT_LT(upTime(), 50'000'000u);
    EXPECT_EQ(engineBoots(), boots + 1);
    EXPECT_EQ(get(ifOperStatus), "1\n") << "what is changed is not kept";
    EXPECT_EQ(get(ifHCInOctets), "1000\n");
    mustChange({"reboot", "3600"});
    EXPECT_TRUE(isSilent());
    mustChange({"reboot"});
    EXPECT_EQ(get(hopLimit), "64\n");
    stopAgent();
}

TEST_F(DeviceTest, CountersGoOnFromWhereTheyAre)
{
    startDevice(devicesMember);
    EXPECT_EQ(get(ifHCInOctets), "1000\n");
    mustChange({"rate", "eth0", "ipv6.inOctets", "1e9"});
    const std::uint64_t first = std::stoull(get(ifHCInOctets));
    EXPECT_GE(first, 1'000u);
    EXPECT_GT(std::stoull(get(ifHCInOctets)), first);
    mustChange({"rate", "eth0", "ipv6.inOctets", "0"});
    const std::string stopped = get(ifHCInOctets);
    EXPECT_GT(std::stoull(stopped), first);
    EXPECT_EQ(get(ifHCInOctets), stopped);
    mustChange({"counter", "eth0", "ipv6.inOctets", "5"});
    EXPECT_EQ(get(ifHCInOctets), "5\n");
    mustChange({"counter", "up2", "ipv4.inOctets", "9"}, "sw2");
    EXPECT_EQ(get(ifHCInOctets, "lab@sw2"), "9\n");
    stopAgent();
}

TEST_F(DeviceTest, ALineThatGoesDownIsNotified)
{
    const RawSocket receiver;
    startDevice("", changesAccess + "trap2sink 127.0.0.1:" + std::to_string(receiver.port()) +
                        " public\nlinkNotifications all\n");
    const std::string common("\x2B\x06\x01\x06\x03\x01\x01\x05", 8);
    EXPECT_NE(receiver.next().find(common + '\1'), std::string::npos) << "coldStart";
    mustChange({"line", "eth0", "down"});
    EXPECT_NE(receiver.next().find(common + '\3'), std::string::npos) << "linkDown";
    mustChange({"line", "eth0", "up"});
    EXPECT_NE(receiver.next().find(common + '\4'), std::string::npos) << "linkUp";
    mustChange({"reboot"});
    EXPECT_NE(receiver.next().find(common + '\1'), std::string::npos) << "coldStart";
    stopAgent();
}

TEST_F(DeviceTest, MistakesAreSaidAsThoseOfAScenarioAndChangeNothing)
{
    startDevice(devicesMember);
    const std::pair<Words, std::string> mistakes[] = {
        {{"line", "eth7", "down"}, "interfaces[0].name: \"eth7\" is not the name of an interface of this device"},
        {{"rate", "eth0", "ipv6.inOctets", "1e13"},
         "interfaces[0].counters.ipv6.inOctets.rate: 10000000000000.0 is not a number from 0 to 1000000000000"},
        {{"fault", "silence", "{\"probability\": 2}"}, "faults.silence.probability: 2 is not a number from 0 to 1"},
        {{R"({"interfaces": [{"name": "eth0", "up": false}], "hopLimit": 5})"},
         "hopLimit: unknown key; expected faults, interfaces, reboot or system"},
        {{R"({"interfaces": [{"name": "eth0", "up": false}, {"name": "eth0", "up": true}]})"},
         "interfaces[1]: the interface \"eth0\" stands twice in one change"},
    };
    for (const auto &[words, mistake] : mistakes) {
        const Result result = change(words);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.errors, "ipmibctl: " + mistake + "\n");
    }
    EXPECT_EQ(get(ifOperStatus), "1\n");
    EXPECT_EQ(change({"line", "up1", "down"}, "sw*").errors,
              "ipmibctl: context sw2: interfaces[0].name: \"up1\" is not the name of an interface of this device\n");
    EXPECT_EQ(get(ifOperStatus, "lab@sw1"), "1\n") << "all or none";
    EXPECT_EQ(change({"line", "eth0", "down"}, "nobody").errors, "ipmibctl: there is no context \"nobody\"\n");
    EXPECT_EQ(change({"line", "eth0", "sideways"}).status, 2);
    EXPECT_EQ(change({"{"}).status, 2);
    EXPECT_EQ(change({"line", "eth0", "down"}).status, 0);
    EXPECT_EQ(get(ifOperStatus), "2\n");
    stopAgent();
}

TEST_F(DeviceTest, SeveralChangesComeFromStandardInput)
{
    startDevice(devicesMember);
    const std::string file = writeFile("changes.json", R"([
        {"interfaces": [{"name": "eth0", "up": false}]},
        {"context": "sw3", "interfaces": [{"name": "up3", "down": [{"from": 0}], "counters": {"ipv4": {"inOctets": 3}}}]}
    ])");
    const Result result =
        run({"sh", "-c", std::string(controlProgram) + " --socket " + path("socket") + " set-device - <" + file},
            environment());
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(get(ifOperStatus), "2\n");
    EXPECT_EQ(get(ifOperStatus, "lab@sw3"), "2\n");
    EXPECT_EQ(get(ifHCInOctets, "lab@sw3"), "3\n");
    EXPECT_EQ(get(ifOperStatus, "lab@sw1"), "1\n");
    stopAgent();
}

int connectedTo(const std::string &path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.data(), path.size());
    const int client = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(connect(client, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    return client;
}

TEST_F(DeviceTest, ClientsOfTheSocketHoldNobodyUp)
{
    startDevice();
    struct stat status {
    };
    ASSERT_EQ(stat(path("socket").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0600u);
    std::vector<int> idle;
    for (int i = 0; i < 20; ++i) {
        idle.push_back(connectedTo(path("socket")));
        EXPECT_EQ(send(idle.back(), "\t{", 2, MSG_NOSIGNAL), 2);
    }
    mustChange({"line", "eth0", "down"});
    EXPECT_EQ(get(ifOperStatus), "2\n");
    for (const std::string &garbage :
         {std::string("no tab\n"), std::string("\t") + std::string(100'000, '[') + "\n", std::string("\t\0\xFF\n", 4),
          std::string("\t{\"interfaces\": [{\"name\": \"eth0\", \"down\": [[[[[[[[[[[[]]]]]]]]]]]]}]}\n")}) {
        const int client = connectedTo(path("socket"));
        EXPECT_EQ(send(client, garbage.data(), garbage.size(), MSG_NOSIGNAL), static_cast<ssize_t>(garbage.size()));
        char answer[6]{};
        EXPECT_EQ(recv(client, answer, 6, MSG_WAITALL), 6);
        EXPECT_EQ(std::string(answer, 6), "error:");
        close(client);
    }
    const int greedy = connectedTo(path("socket"));
    const std::string piece(65'536, 'x');
    for (int i = 0; i < 40 && send(greedy, piece.data(), piece.size(), MSG_NOSIGNAL) > 0; ++i) {
    }
    close(greedy);
    EXPECT_EQ(get(ifOperStatus), "2\n");
    std::ranges::for_each(idle, close);
    stopAgent();
    EXPECT_NE(stat(path("socket").c_str(), &status), 0) << "it goes with the agent";
}

TEST_F(DeviceTest, ARealDeviceIsNotChanged)
{
    const Result result = runAgent(
        {agentProgram, "-f", "-C", "--device-socket", path("socket"), "--platform", scriptedPlatform, address()});
    EXPECT_EQ(result.status, 2) << result.errors;
    EXPECT_NE(result.errors.find("--device-socket is for a device that is made up"), std::string::npos);
    EXPECT_EQ(change({"line", "eth0", "down"}).status, 1);
}

} // namespace
} // namespace ipmib::e2e
