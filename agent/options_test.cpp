// SPDX-License-Identifier: BSD-3-Clause
// The command line: what each flag does, and one clear line for what is wrong.

#include "options.h"

#include <gtest/gtest.h>

namespace ipmib::agent
{

namespace
{

Options parse(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "ipmibd");
    std::vector<char *> argv;
    for (std::string &argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return parseOptions(static_cast<int>(arguments.size()), argv.data());
}

std::string complaintAbout(const std::vector<std::string> &arguments)
{
    try {
        parse(arguments);
    } catch (const host::UsageError &error) {
        return error.what();
    }
    return "";
}

using Words = std::vector<std::string>;
using PlatformOptions = std::vector<std::pair<std::string, std::string>>;

TEST(Options, NothingMeansADaemonOnTheLinuxPlatformWithItsDefaults)
{
    const Options options = parse({});
    EXPECT_EQ(options.action, Options::Action::run);
    EXPECT_FALSE(options.foreground);
    EXPECT_FALSE(options.loggingChosen);
    EXPECT_TRUE(options.defaultConfiguration);
    EXPECT_EQ(options.configuration, "");
    EXPECT_EQ(options.listenOn, Words{});
    EXPECT_EQ(options.plugin.platform, "linux");
    EXPECT_EQ(options.plugin.module, "");
}

TEST(Options, TheFlagsOfSnmpd)
{
    const Options options = parse({"-f", "-Lo", "-C", "-c", "a.conf,b.conf", "-p", "/run/pid", "udp:127.0.0.1:1161"});
    EXPECT_TRUE(options.foreground);
    EXPECT_TRUE(options.loggingChosen);
    EXPECT_FALSE(options.defaultConfiguration);
    EXPECT_EQ(options.configuration, "a.conf,b.conf");
    EXPECT_EQ(options.pidFile, "/run/pid");
    EXPECT_EQ(options.listenOn, Words{"udp:127.0.0.1:1161"});
}

TEST(Options, AnArgumentMayStickToItsFlag)
{
    const Options options = parse({"-cx.conf", "-p/run/pid", "-xtcp:localhost:705"});
    EXPECT_EQ(options.configuration, "x.conf");
    EXPECT_EQ(options.pidFile, "/run/pid");
    EXPECT_EQ(options.master, "tcp:localhost:705");
}

TEST(Options, SeveralListeningAddressesAlsoBetweenFlags)
{
    EXPECT_EQ(parse({"udp:1", "-f", "tcp:2"}).listenOn, (Words{"udp:1", "tcp:2"}));
}

TEST(Options, TheFileOfTheLogMayBeAnArgumentOfItsOwn)
{
    const std::string file = testing::TempDir() + "options_test.log";
    const Options options = parse({"-Lf", file, "udp:127.0.0.1:1161"});
    EXPECT_TRUE(options.loggingChosen);
    EXPECT_EQ(options.listenOn, Words{"udp:127.0.0.1:1161"});
}

TEST(Options, PlatformAndModule)
{
    const Options options = parse({"--platform", "simulated:device.json", "--module=/lib/m.so"});
    EXPECT_EQ(options.plugin.platform, "simulated:device.json");
    EXPECT_EQ(options.plugin.module, "/lib/m.so");
}

TEST(Options, LongOptionsThatAreNotOursGoToThePlatform)
{
    const Options options = parse({"--ipv4-accounting", "-f", "--size=5", "--empty="});
    EXPECT_EQ(options.plugin.platformOptions, (PlatformOptions{{"ipv4-accounting", ""}, {"size", "5"}, {"empty", ""}}));
    EXPECT_TRUE(options.foreground);
}

TEST(Options, HelpAndVersion)
{
    EXPECT_EQ(parse({"-h"}).action, Options::Action::help);
    EXPECT_EQ(parse({"--help"}).action, Options::Action::help);
    EXPECT_EQ(parse({"--check", "-x", "/master"}).action, Options::Action::check);
    EXPECT_EQ(parse({"-v"}).action, Options::Action::version);
    EXPECT_EQ(parse({"--version", "--nonsense"}).action, Options::Action::version);
}

TEST(Options, WhatIsWrongIsNamed)
{
    EXPECT_EQ(complaintAbout({"-Q"}), "unknown option -Q");
    EXPECT_EQ(complaintAbout({"-fQ"}), "unknown option -Q");
    EXPECT_EQ(complaintAbout({"-c"}), "option -c needs an argument");
    EXPECT_EQ(complaintAbout({"--module"}), "option --module needs an argument");
    EXPECT_EQ(complaintAbout({"--help=much"}), "option --help=much takes no argument");
    EXPECT_EQ(complaintAbout({"-Lx"}), "-Lx: unknown destination of the log");
    EXPECT_EQ(complaintAbout({"-Lf"}), "-Lf needs an argument");
    EXPECT_EQ(complaintAbout({"-x", "/master", "udp:1161"}), "with -x there is nothing to listen on: udp:1161");
}

TEST(Options, ALogFileThatCannotBeWrittenIsNamed)
{
    try {
        parse({"-Lf", "/nonexistent/log"});
        FAIL() << "it was accepted";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "cannot write the log file /nonexistent/log");
    }
}

TEST(SplitList, DropsWhatIsEmpty)
{
    EXPECT_EQ(splitList("a,b"), (Words{"a", "b"}));
    EXPECT_EQ(splitList(",a,,b,"), (Words{"a", "b"}));
    EXPECT_EQ(splitList(""), Words{});
}

} // namespace

} // namespace ipmib::agent
