// SPDX-License-Identifier: BSD-3-Clause
// How the start goes with what its starter has, or has not, and who hears of it.

#include "e2e/agent_under_test.h"

#include <csignal>

namespace ipmib::e2e
{

namespace
{

class StartTest : public AgentTest
{
  protected:
    // Runs the agent from a shell that does this first.
    Words shell(const std::string &first, const Words &options) const
    {
        Words words = {"sh", "-c", first + "; exec \"$@\"", "sh"};
        const Words agent = agentWords({"-C", "-c", writeFile("test.conf", everybody)});
        words.insert(words.end(), agent.begin(), agent.end());
        words.insert(words.end(), options.begin(), options.end());
        return words;
    }
    static std::string target(pid_t process, int descriptor)
    {
        return std::filesystem::read_symlink("/proc/" + std::to_string(process) + "/fd/" + std::to_string(descriptor));
    }
};

constexpr const char *closings[] = {"exec <&-", "exec >&- 2>&-", "exec <&- >&-", "exec <&- >&- 2>&-"};

TEST_F(StartTest, WithoutStandardDescriptorsInTheForeground)
{
    for (const char *closing : closings) {
        startProgram(shell(closing, {"-f", "-Ln"}));
        for (int standard = 0; standard <= 2; ++standard) {
            const std::string name = target(agent().pid(), standard);
            EXPECT_TRUE(name == "/dev/null" || name.starts_with("/memfd:")) << standard << " is " << name;
        }
        agent().signal(SIGTERM);
        EXPECT_EQ(agent().wait(), 0) << closing;
    }
}

TEST_F(StartTest, WithoutStandardDescriptorsAsADaemon)
{
    for (const char *closing : closings) {
        EXPECT_EQ(startDaemon(shell(closing, {"-Ln", "-p", path("pid")})).status, 0);
        ASSERT_GT(daemon(), 0);
        for (int standard = 0; standard <= 2; ++standard) {
            EXPECT_EQ(target(daemon(), standard), "/dev/null");
        }
        endDaemon();
    }
}

// A daemon's file that cannot be written when its starter already waits for nothing but its readiness.
TEST_F(StartTest, ALateFailureIsToldBeforeTheStarterGoes)
{
    Words words = shell("trap '' XFSZ; ulimit -f 0", {"-Ln", "-p", path("pid")});
    words.insert(words.begin(), {"sh", "-c", "{ \"$@\"; echo \"status $?\"; } 2>&1 | cat", "sh"});
    const Result result = runAgent(words);
    EXPECT_EQ(result.output, "ipmibd: cannot write the process id to " + path("pid") + ": File too large\nstatus 1\n");
    EXPECT_FALSE(std::filesystem::exists(path("pid")));
}

} // namespace

} // namespace ipmib::e2e
