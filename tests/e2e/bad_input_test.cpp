// SPDX-License-Identifier: BSD-3-Clause
// What cannot work is told in one clear line on standard error, with an exit status, before anything runs.

#include "e2e/agent_under_test.h"

#include <sys/stat.h>

#include <fstream>

namespace ipmib::e2e
{

namespace
{

class BadInputTest : public AgentTest
{
  protected:
    // The one line, without the program's name. Nothing may have begun to serve.
    std::string complaint(const Words &words, int status)
    {
        const Result result = runAgent(words);
        EXPECT_EQ(result.status, status) << result.errors;
        EXPECT_EQ(result.output.find(" serves "), std::string::npos) << result.output;
        const Words lines = linesOf(result.errors);
        const std::string beginning = "ipmibd: ";
        if (lines.size() != 1 || !lines[0].starts_with(beginning)) {
            return "not one line:\n" + result.errors;
        }
        return lines[0].substr(beginning.size());
    }

    Words configured(const Words &options, bool foreground = true) const
    {
        Words words = {"-C", "-c", writeFile("test.conf", everybody)};
        if (foreground) {
            words.insert(words.end(), {"-f", "-Lo"});
        }
        words.insert(words.end(), options.begin(), options.end());
        return agentWords(words);
    }
};

TEST_F(BadInputTest, UnknownFlags)
{
    EXPECT_EQ(complaint({agentProgram, "-Q"}, 2), "unknown option -Q");
    EXPECT_EQ(complaint({agentProgram, "-c"}, 2), "option -c needs an argument");
    EXPECT_EQ(complaint({agentProgram, "-Lz"}, 2), "-Lz: unknown destination of the log");
}

TEST_F(BadInputTest, AnOptionThatNoPlatformKnows)
{
    EXPECT_EQ(complaint(configured({"--colour=red"}), 2), "unknown option --colour");
    EXPECT_EQ(complaint(configured({"--platform", "linux", "--bogus"}), 2),
              "there is no option --bogus; those of platform linux are --ipv4-accounting, --radvd-conf=FILE, "
              "--route-tables=LIST and --router-anycast");
    EXPECT_EQ(complaint(configured({"--platform", "simulated"}), 2),
              "platform simulated needs a scenario: --platform simulated:FILE");
}

TEST_F(BadInputTest, AMissingConfigurationFile)
{
    EXPECT_EQ(complaint({agentProgram, "-f", "-C", "-c", "/nonexistent.conf", address()}, 1),
              "cannot read the configuration file /nonexistent.conf: No such file or directory");
    EXPECT_EQ(
        complaint({agentProgram, "-C", "-c", writeFile("a.conf", everybody) + "," + path("b.conf"), address()}, 1),
        "cannot read the configuration file " + path("b.conf") + ": No such file or directory");
    EXPECT_EQ(complaint({agentProgram, "-C", "-c", "/", address()}, 1),
              "cannot read the configuration file /: Is a directory");
}

TEST_F(BadInputTest, AConfigurationFileThatHasNoEnd)
{
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    std::ofstream(path("large"));
    std::filesystem::resize_file(path("large"), 16 * 1'048'576 + 1);
    const std::pair<std::string, std::string> files[] = {{path("pipe"), "it is no regular file"},
                                                         {"/dev/zero", "it is no regular file"},
                                                         {path("large"), "it is larger than 16777216 bytes"}};
    for (const auto &[file, reason] : files) {
        EXPECT_EQ(complaint({agentProgram, "-f", "-C", "-c", file, address()}, 1),
                  "cannot read the configuration file " + file + ": " + reason);
        const std::string including = writeFile("test.conf", "includeFile " + file + "\n");
        EXPECT_EQ(complaint({agentProgram, "-f", "-C", "-c", including, address()}, 1),
                  "cannot read the configuration file " + file + ": " + reason);
    }
}

TEST_F(BadInputTest, AnAddressInUseAlsoWithoutATerminal)
{
    startAgent();
    const std::string reason = "cannot listen on " + address() + ": Address already in use";
    EXPECT_EQ(complaint(configured({}), 1), reason);
    EXPECT_EQ(complaint(configured({"-Lf", path("log")}, false), 1), reason);
    stopAgent();
}

TEST_F(BadInputTest, AnAddressThatIsNoneOfOurs)
{
    EXPECT_EQ(complaint(configured({"udp:192.0.2.1:1161"}), 1),
              "cannot listen on udp:192.0.2.1:1161: Cannot assign requested address");
    EXPECT_EQ(complaint(configured({"unix:/nonexistent/socket"}), 1),
              "cannot listen on unix:/nonexistent/socket: No such file or directory");
    EXPECT_EQ(complaint(configured({"carrier-pigeon"}), 1),
              "cannot listen on carrier-pigeon: not an address that can be listened on");
}

TEST_F(BadInputTest, APlatformThatDoesNotLoad)
{
    EXPECT_EQ(complaint(configured({"--platform", "simulate:x"}), 2),
              "there is no platform \"simulate\"; there are: linux, simulated");
    // It loads, but what the module needs is not in it.
    const std::string empty = complaint(configured({"--platform", emptyLibrary}), 1);
    EXPECT_NE(empty.find("libipmib.so: undefined symbol: "), std::string::npos) << empty;
}

TEST_F(BadInputTest, APlatformThatDoesNotStart)
{
    EXPECT_EQ(complaint(configured({"--refuse"}), 1),
              std::string(scriptedPlatform) + ": the platform does not start: told to refuse");
}

TEST_F(BadInputTest, AModuleThatDoesNotLoad)
{
    const std::string missing = complaint(configured({"--module", "/nonexistent.so"}), 1);
    EXPECT_NE(missing.find("/nonexistent.so"), std::string::npos) << missing;
    const std::string none = complaint(configured({"--module", emptyLibrary}), 1);
    EXPECT_NE(none.find("registers no MIB tree"), std::string::npos) << none;
}

TEST_F(BadInputTest, FilesThatCannotBeWritten)
{
    EXPECT_EQ(complaint(configured({"-p", "/nonexistent/pid"}), 1),
              "cannot write the process id to /nonexistent/pid: No such file or directory");
    EXPECT_EQ(complaint(configured({"-Lf", "/nonexistent/log"}, false), 1),
              "cannot write the log file /nonexistent/log");
}

TEST_F(BadInputTest, HelpAndVersionAreNoErrors)
{
    for (const char *option : {"-h", "--help"}) {
        const Result help = runAgent({agentProgram, option});
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.errors, "");
        EXPECT_TRUE(help.output.starts_with("Usage: ipmibd ")) << help.output;
    }
    for (const char *option : {"-v", "--version"}) {
        const Result version = runAgent({agentProgram, option});
        EXPECT_EQ(version.status, 0);
        EXPECT_TRUE(version.output.starts_with("ipmibd ")) << version.output;
    }
}

} // namespace

} // namespace ipmib::e2e
