// SPDX-License-Identifier: BSD-3-Clause
// While nobody asks and nothing happens, the agent sleeps: it is not even woken up.

#include "e2e/agent_under_test.h"

#include <chrono>
#include <fstream>
#include <thread>

namespace ipmib::e2e
{

namespace
{

// How often a process has gone to sleep. Whoever is woken up, and be it to find nothing to do, goes to sleep again.
std::uint64_t timesGoneToSleep(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    const std::string name = "voluntary_ctxt_switches:";
    for (std::string word; status >> word;) {
        if (word == name) {
            std::uint64_t times = 0;
            status >> times;
            return times;
        }
    }
    ADD_FAILURE() << "the kernel does not count how often a process sleeps";
    return 0;
}

class IdleTest : public AgentTest
{
};

// The kernel may have something to announce now and then, also in a network where nothing happens. What comes again
// every few seconds would be seen in every pause.
TEST_F(IdleTest, NothingWakesItUp)
{
    IPMIB_NEEDS_NAMESPACES();
    network()->run("ip link add v0 type veth peer name v1; ip link set v0 up; ip link set v1 up");
    startAgent(everybody, {"--platform", "linux"});
    walk("snmpbulkwalk", publicV2, {}, "1.3.6.1.2.1");
    constexpr int attempts = 6;
    bool slept = false;
    for (int attempt = 0; attempt < attempts && !slept; ++attempt) {
        const std::uint64_t before = timesGoneToSleep(agent().pid());
        std::this_thread::sleep_for(std::chrono::seconds(4));
        slept = timesGoneToSleep(agent().pid()) == before;
    }
    EXPECT_TRUE(slept);
    stopAgent();
}

} // namespace

} // namespace ipmib::e2e
