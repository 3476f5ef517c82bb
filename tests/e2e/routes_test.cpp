// SPDX-License-Identifier: BSD-3-Clause
// Questions about routes that have not been read yet wait for them, as those for other rows that are behind what was
// announced do, and nobody else does; and how many routes there may be.

#include "e2e/agent_under_test.h"

namespace ipmib::e2e
{

namespace
{

constexpr const char *inetCidrRouteNumber = "1.3.6.1.2.1.4.24.6.0";
constexpr const char *ifIndexOfRoute = "1.3.6.1.2.1.4.24.7.1.7";
constexpr const char *route = ".1.3.6.1.2.1.4.24.7.1.7.1.4.10.0.0.0.8.2.0.0.0.0 = INTEGER: 2";
constexpr const char *forwarding = "1.3.6.1.2.1.4.25.0";
constexpr const char *statesOfNeighbours = "1.3.6.1.2.1.4.35.1.7";
constexpr const char *stateOfNeighbour = ".1.3.6.1.2.1.4.35.1.7.2.2.16.32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.2";
const Words never = {"--routes-read-after=4000000000"};

class RoutesTest : public AgentTest
{
  protected:
    // To a client that asks once, and is patient.
    Words answersTo(const std::string &program, const Words &arguments) const
    {
        Words words = {"-r0", "-t20"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return linesOf(snmp(program, publicV2, words).output);
    }
};

TEST_F(RoutesTest, QuestionsWaitUntilTheyHaveBeenRead)
{
    const struct {
        const char *program;
        Words arguments;
        Words answers;
    } questions[] = {
        {"snmpget",
         {inetCidrRouteNumber, forwarding, "1.3.6.1.2.1.4.24.7.1.7.5"},
         {".1.3.6.1.2.1.4.24.6.0 = Gauge32: 1", ".1.3.6.1.2.1.4.25.0 = INTEGER: 1",
          ".1.3.6.1.2.1.4.24.7.1.7.5 = No Such Instance currently exists at this OID"}},
        {"snmpgetnext", {ifIndexOfRoute}, {route}},
        {"snmpbulkget",
         {"-Cr2", ifIndexOfRoute},
         {route, ".1.3.6.1.2.1.4.24.7.1.8.1.4.10.0.0.0.8.2.0.0.0.0 = INTEGER: 3"}},
    };
    for (const auto &[program, arguments, answers] : questions) {
        startAgent(everybody, {"--routes-read-after=5"});
        EXPECT_EQ(answersTo(program, arguments), answers) << program;
        stopAgent();
    }
}

TEST_F(RoutesTest, OthersAreAnsweredMeanwhile)
{
    startAgent(everybody, never);
    EXPECT_NE(snmp("snmpget", publicV2, {"-r0", "-t0.1", inetCidrRouteNumber}).status, 0) << "nobody knows yet";
    EXPECT_EQ(answersTo("snmpget", {forwarding}), Words{".1.3.6.1.2.1.4.25.0 = INTEGER: 1"});
    stopAgent();
}

TEST_F(RoutesTest, QuestionsForRowsThatAreBehindWaitToo)
{
    const Words row = {stateOfNeighbour + std::string(" = INTEGER: 1")};
    startAgent(everybody, {"--neighbours-current-after=5"});
    EXPECT_EQ(answersTo("snmpgetnext", {statesOfNeighbours}), row);
    stopAgent();
    startAgent(everybody, {"--neighbours-current-after=5"});
    EXPECT_EQ(answersTo("snmpget", {stateOfNeighbour}), row);
    stopAgent();
    startAgent(everybody, {"--neighbours-current-after=4000000000"});
    EXPECT_NE(snmp("snmpget", publicV2, {"-r0", "-t0.1", stateOfNeighbour}).status, 0);
    EXPECT_EQ(answersTo("snmpget", {forwarding}), Words{".1.3.6.1.2.1.4.25.0 = INTEGER: 1"});
    EXPECT_EQ(answersTo("snmpgetnext", {"1.3.6.1.2.1.4.34.1.3"}).size(), 1u) << "of another table of the same source";
    stopAgent();
}

TEST_F(RoutesTest, ReadingThatTakesTooLongIsNotWaitedFor)
{
    startAgent(everybody, never);
    EXPECT_EQ(answersTo("snmpget", {inetCidrRouteNumber}), Words{".1.3.6.1.2.1.4.24.6.0 = Gauge32: 0"});
    stopAgent();
}

TEST_F(RoutesTest, AClientThatIsGoneMeanwhileIsNotAnswered)
{
    startAgent(everybody + "agentaddress " + address("tcp") + "\n", never);
    for (int client = 0; client < 3; ++client) { // the next one's session may lie where the last one's was
        const Result gone = runAgent({"snmpget", "-v2c", "-c", "public", "-r0", "-t0.1", address("tcp"),
                                      inetCidrRouteNumber, ifIndexOfRoute, "1.3.6.1.2.1.4.24.3.0"});
        EXPECT_NE(gone.status, 0);
    }
    EXPECT_EQ(answersTo("snmpget", {inetCidrRouteNumber}), Words{".1.3.6.1.2.1.4.24.6.0 = Gauge32: 0"});
    stopAgent();
}

TEST_F(RoutesTest, AConfigurationMayLimitThem)
{
    const std::string file = writeFile("device.json", R"({"interfaces": [{"name": "a", "ifIndex": 2}],
        "routes": [{"destination": "10.0.0.0/24", "interface": "a", "count": 1000}]})");
    startAgent(everybody + "routes 300\n", {"--platform", "simulated:" + file});
    EXPECT_EQ(walk("snmpbulkwalk", publicV2, {"-Cr50"}, ifIndexOfRoute).size(), 300u);
    EXPECT_EQ(snmp("snmpget", publicV2, {inetCidrRouteNumber, "1.3.6.1.2.1.4.24.8.0"}).output,
              ".1.3.6.1.2.1.4.24.6.0 = Gauge32: 300\n.1.3.6.1.2.1.4.24.8.0 = Counter32: 700\n");
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
