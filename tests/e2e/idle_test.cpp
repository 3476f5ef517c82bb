// SPDX-License-Identifier: BSD-3-Clause
// While nobody asks and nothing happens, the agent sleeps: it is not even woken up.

#include "e2e/agent_under_test.h"

namespace ipmib::e2e
{

namespace
{

class IdleTest : public AgentTest
{
};

TEST_F(IdleTest, NothingWakesItUp)
{
    IPMIB_NEEDS_NAMESPACES();
    network()->run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    startAgent(everybody, {"--platform", "linux"});
    walk("snmpbulkwalk", publicV2, {}, "1.3.6.1.2.1");
    EXPECT_TRUE(sleepsThrough(agent().pid()));
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
