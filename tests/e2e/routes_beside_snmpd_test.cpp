// SPDX-License-Identifier: BSD-3-Clause
// Questions about routes that have not been read yet, and for rows that are behind what was announced, wait for them
// also where they come by way of an snmpd: ipmibd as its sub-agent, and the object inside it.

#include "e2e/master_under_test.h"

namespace ipmib::e2e
{

namespace
{

constexpr const char *number = "1.3.6.1.2.1.4.24.6.0";
constexpr const char *ifIndexOfRoute = "1.3.6.1.2.1.4.24.7.1.7";
constexpr const char *forwarding = "1.3.6.1.2.1.4.25.0";
const Words rowAndNumber = {".1.3.6.1.2.1.4.24.7.1.7.1.4.10.0.0.0.8.2.0.0.0.0 = INTEGER: 2",
                            ".1.3.6.1.2.1.4.24.6.0 = Gauge32: 1"};
constexpr const char *soon = "routes-read-after=20";
constexpr const char *never = "routes-read-after=4000000000";
constexpr const char *behind = "neighbours-current-after=20";
constexpr const char *statesOfNeighbours = "1.3.6.1.2.1.4.35.1.7";
const Words stateOfNeighbour = {".1.3.6.1.2.1.4.35.1.7.2.2.16.32.1.13.184.0.0.0.0.0.0.0.0.0.0.0.2 = INTEGER: 1"};

class RoutesBesideSnmpd : public MasterTest
{
  protected:
    void startWithSubagent(const std::string &option)
    {
        startMaster("agentXTimeout 20\n");
        startSubagent("serve all take\n", {"--platform", scriptedPlatform, "--" + option});
        ASSERT_TRUE(eventually([this] { return isThere(forwarding); }));
    }
    void startInside(const std::string &option)
    {
        startMaster(std::string("dlmod ipmib ") + IPMIB_SNMPD_OBJECT + "\nipmibPlatform " + scriptedPlatform +
                    "\nipmibServe all take\nipmibPlatformOption " + option + "\n");
    }
    // To a client that asks once, and is patient.
    Words answersTo(const std::string &program, const Words &arguments) const
    {
        Words words = {"-r0", "-t20"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return linesOf(snmp(program, publicV2, words).output);
    }
    void expectToWait()
    {
        Words answers = answersTo("snmpgetnext", {ifIndexOfRoute});
        const Words ofNumber = answersTo("snmpget", {number});
        answers.insert(answers.end(), ofNumber.begin(), ofNumber.end());
        EXPECT_EQ(answers, rowAndNumber);
    }
    void expectOthersToBeAnsweredMeanwhile()
    {
        EXPECT_NE(snmp("snmpget", publicV2, {"-r0", "-t0.1", number}).status, 0) << "nobody knows yet";
        EXPECT_EQ(answersTo("snmpget", {forwarding}), Words{".1.3.6.1.2.1.4.25.0 = INTEGER: 1"});
        EXPECT_EQ(answersTo("snmpget", {number}), Words{".1.3.6.1.2.1.4.24.6.0 = Gauge32: 0"}) << "not for ever";
    }
};

TEST_F(RoutesBesideSnmpd, ASubagentHoldsQuestions)
{
    startWithSubagent(soon);
    expectToWait();
    stopSubagent();
}

TEST_F(RoutesBesideSnmpd, ASubagentHoldsQuestionsForRowsThatAreBehind)
{
    startWithSubagent(behind);
    ASSERT_TRUE(eventually([this] {
        return timesLogged("agentx: connected to the master at " + socketPath() + ", serving 22 of 22 tables") == 1;
    }));
    EXPECT_EQ(answersTo("snmpgetnext", {statesOfNeighbours}), stateOfNeighbour);
    stopSubagent();
}

TEST_F(RoutesBesideSnmpd, ASubagentAnswersOthersMeanwhile)
{
    startWithSubagent(never);
    expectOthersToBeAnsweredMeanwhile();
    stopSubagent();
}

TEST_F(RoutesBesideSnmpd, TheObjectInsideHoldsQuestions)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
#endif
    startInside(soon);
    expectToWait();
}

TEST_F(RoutesBesideSnmpd, TheObjectInsideHoldsQuestionsForRowsThatAreBehind)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
#endif
    startInside(behind);
    EXPECT_EQ(answersTo("snmpgetnext", {statesOfNeighbours}), stateOfNeighbour);
}

TEST_F(RoutesBesideSnmpd, TheObjectInsideAnswersOthersMeanwhile)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "snmpd has no sanitizer, and so cannot load what has one";
#endif
    startInside(never);
    expectOthersToBeAnsweredMeanwhile();
}

} // namespace

} // namespace ipmib::e2e
