// SPDX-License-Identifier: BSD-3-Clause
// Loading platforms and modules: good ones, broken ones, and the module that ships with a platform that a test scripts.
#include "plugin.h"

#include "contract.h"
#include "instances.h"
#include "registry.h"
#include "testing/device.h"
#include "testing/packets.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace ipmib::host::testing
{
namespace
{

std::vector<std::string> logLines;

void log(int, const char *line)
{
    logLines.emplace_back(line);
}

class PluginTest : public ::testing::Test
{
  protected:
    PluginTest()
    {
        logLines.clear();
        options.pluginDirectory = IPMIB_TEST_PLUGINS;
        options.platform = "test";
        options.module = options.pluginDirectory + "/module_good.so";
        options.log = log;
    }
    void TearDown() override
    {
        EXPECT_TRUE(Registry::ofProcess().trees().empty()) << "something was left loaded";
        EXPECT_TRUE(Registry::ofProcess().callbacks().empty());
    }

    std::string error()
    {
        try {
            Plugin plugin(options);
        } catch (const PluginError &problem) {
            return problem.what();
        }
        return "no error";
    }
    std::string mistake()
    {
        try {
            Plugin plugin(options);
        } catch (const UsageError &problem) {
            return problem.what();
        }
        return "no mistake";
    }
    std::string inDirectory(const char *rest) const { return options.pluginDirectory + "/" + rest; }

    PluginOptions options;
};

std::uint64_t valueOfScalar(Plugin &plugin)
{
    const Identifier asked{1, 7, 0};
    Variable variable;
    variable.asked = asked;
    plugin.resolver().get({&variable, 1});
    EXPECT_EQ(variable.status, Status::ok);
    return variable.value.number;
}

TEST_F(PluginTest, startsThePlatformBeforeTheModuleAndStopsItAfter)
{
    options.platform = "test:12345";
    options.platformOptions = {{"colour", "green"}};
    {
        Plugin plugin(options);
        EXPECT_EQ(valueOfScalar(plugin), 5u);
        ASSERT_NE(plugin.platform(), nullptr);
        EXPECT_EQ(logLines, (std::vector<std::string>{"colour", "green", "started"}));
    }
    EXPECT_EQ(logLines.back(), "stopped");
}

TEST_F(PluginTest, comesAndGoesAgainAndAgain)
{
    for (int i = 0; i < 50; ++i) {
        Plugin plugin(options);
        EXPECT_EQ(valueOfScalar(plugin), 0u);
    }
    EXPECT_EQ(logLines.size(), 100u);
}

TEST_F(PluginTest, takesAPlatformByItsPath)
{
    options.platform = inDirectory("platform_plain.so");
    Plugin plugin(options);
    EXPECT_EQ(valueOfScalar(plugin), 99u);
    EXPECT_EQ(plugin.platform(), nullptr);
}

TEST_F(PluginTest, findsTheModuleInThePluginDirectory)
{
    options.module.clear();
    EXPECT_EQ(error(), inDirectory("libipmib.so") + ": cannot open shared object file: No such file or directory");
}

TEST_F(PluginTest, namesThePlatformThatIsNotThere)
{
    options.platform = "toaster";
    EXPECT_TRUE(mistake().starts_with("there is no platform \"toaster\"; there are: ")) << mistake();
    EXPECT_NE(mistake().find(", plain, scripted, test"), std::string::npos) << mistake();
    options.platform = inDirectory("platform_toaster.so");
    EXPECT_EQ(error(),
              inDirectory("platform_toaster.so") + ": cannot open shared object file: No such file or directory");
    options.pluginDirectory = inDirectory("nowhere");
    options.platform = "toaster";
    EXPECT_EQ(error(),
              inDirectory("platform_toaster.so") + ": cannot open shared object file: No such file or directory");
}

TEST_F(PluginTest, namesTheFileThatIsNoLibrary)
{
    options.module = ::testing::TempDir() + "no_library.so";
    std::ofstream(options.module) << std::string(1000, '-');
    EXPECT_EQ(error(), options.module + ": invalid ELF header");
    std::filesystem::remove(options.module);
}

TEST_F(PluginTest, doesNotWaitForAPipe)
{
    options.module = ::testing::TempDir() + "pipe.so";
    ASSERT_EQ(mkfifo(options.module.c_str(), 0600), 0);
    EXPECT_EQ(error(), options.module + ": it is a pipe");
    std::filesystem::remove(options.module);
}

TEST_F(PluginTest, refusesALibraryOfAnotherContractBeforeItRuns)
{
    options.module = inDirectory("module_of_other_records.so");
    EXPECT_EQ(error(), options.module +
                           ": it was built for version 2.3 of ipmib/records.h, and this program has version "
                           "1.0; build it with the headers of this program, or use the program that it was "
                           "built for");
    EXPECT_TRUE(Registry::ofProcess().trees().empty()); // its load hook has not run
    options.module = inDirectory("module_of_later_records.so");
    EXPECT_EQ(error(), "no error");
}

TEST_F(PluginTest, readsWhichContractALibraryWasBuiltFor)
{
    const auto ours = contractOf(IPMIB_LIBRARY);
    ASSERT_TRUE(ours);
    EXPECT_EQ(contractText(*ours), "records.h 1.0, platform.h 1.0, message.h 1.0, module.h 1.0");
    EXPECT_FALSE(contractOf(inDirectory("module_good.so"))) << "a library without the note is taken as it is";
    EXPECT_FALSE(contractOf(inDirectory("nowhere.so")));
}

TEST_F(PluginTest, looksAtBrokenLibrariesWithoutHarm)
{
    std::ifstream library(IPMIB_LIBRARY, std::ios::binary);
    const std::string right((std::istreambuf_iterator<char>(library)), std::istreambuf_iterator<char>());
    const std::string path = ::testing::TempDir() + "broken_library.so";
    // Every byte of the headers and of what lies behind them, one after the other, and every length.
    for (std::size_t place = 0; place < 1024; ++place) {
        std::ofstream(path, std::ios::binary) << right.substr(0, place);
        contractOf(path);
    }
    std::ofstream(path, std::ios::binary) << right;
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    for (std::size_t place = 0; place < 1024; ++place) {
        const auto put = [&](char byte) { file.seekp(static_cast<std::streamoff>(place)).put(byte).flush(); };
        put(static_cast<char>(~right[place]));
        contractOf(path);
        put(right[place]);
    }
    EXPECT_TRUE(contractOf(path));
    std::filesystem::remove(path);
}

TEST_F(PluginTest, namesTheMissingSymbolAndItsLibrary)
{
    options.module = inDirectory("module_missing_symbol.so");
    EXPECT_EQ(error(), options.module + ": undefined symbol: ipmib_test_service_that_nobody_has");
    EXPECT_EQ(logLines.back(), "stopped");
}

TEST_F(PluginTest, saysWhyThePlatformDoesNotStart)
{
    options.platform = "test:broken";
    EXPECT_EQ(error(),
              inDirectory("platform_test.so") + ": the platform does not start: the argument \"broken\" is of no use");
    EXPECT_TRUE(logLines.empty()); // neither started nor stopped
}

TEST_F(PluginTest, usesOfAPlatformWhatItHas)
{
    options.platform = "before_sizes";
    EXPECT_EQ(Plugin(options).platform()->uptime_began, nullptr); // what lies behind its record is not looked at
    options.platform = "future";
    EXPECT_NE(Plugin(options).platform()->uptime_began, nullptr);
    EXPECT_EQ(Plugin(options).platform()->size, sizeof(IpmibPlatformHooks));
}

TEST_F(PluginTest, aPlatformFromBeforeTheInstancesHasOne)
{
    options.platform = "before_sizes:12345";
    Plugin plugin(options);
    Catalogue catalogue(
        {.trees = {{&plugin.tree(), {}}}, .sources = {&plugin.resolver()}, .platform = plugin.platform()});
    SysUpTime upTime;
    host::Instances instances(catalogue, upTime);
    EXPECT_FALSE(instances.canBeMany());
    EXPECT_TRUE(instances.contexts().empty());
    EXPECT_THROW(instances.create("x"), std::runtime_error);
    instances.select(host::Instances::first);
    EXPECT_EQ(valueOfScalar(plugin), 5u);
}

TEST_F(PluginTest, answersForTheInstanceThatIsSelected)
{
    options.platform = "of_many:12345";
    Plugin plugin(options);
    Catalogue catalogue(
        {.trees = {{&plugin.tree(), {}}}, .sources = {&plugin.resolver()}, .platform = plugin.platform()});
    SysUpTime upTime;
    {
        host::Instances instances(catalogue, upTime);
        ASSERT_TRUE(instances.canBeMany());
        const auto red = instances.create("xx");
        const auto blue = instances.create("xxx");
        EXPECT_EQ(valueOfScalar(plugin), 5u);
        instances.select(blue);
        EXPECT_EQ(valueOfScalar(plugin), 3u);
        instances.select(red);
        EXPECT_EQ(valueOfScalar(plugin), 2u);
        instances.destroy(red);
        EXPECT_EQ(valueOfScalar(plugin), 5u);
        EXPECT_EQ(instances.create("xxxx"), red) << "the number is free again";
        EXPECT_THROW(instances.create("broken"), std::runtime_error);
        EXPECT_EQ(instances.contexts().at(1).name, "blue");
        EXPECT_EQ(std::ranges::count(logLines, "destroyed"), 1);
    }
    EXPECT_EQ(std::ranges::count(logLines, "destroyed"), 3) << "all that were begun have ended";
}

TEST_F(PluginTest, refusesHooksOfAnImpossibleSize)
{
    options.platform = "tiny";
    EXPECT_EQ(error(), inDirectory("platform_tiny.so") +
                           ": ipmib_platform_hooks has the size or version 2, which no host can use");
}

TEST_F(PluginTest, tellsMistakesOfTheCommandLineFromFailures)
{
    options.platform = "test:wrong";
    EXPECT_EQ(mistake(), "the argument \"wrong\" is wrong");
    options.platform = "test";
    options.platformOptions = {{"colour", "green"}, {"wrong", ""}, {"shape", "round"}};
    try {
        Plugin plugin(options);
        ADD_FAILURE();
    } catch (const WrongOption &wrong) {
        EXPECT_STREQ(wrong.what(), "the option --wrong is wrong");
        EXPECT_EQ(wrong.place, 1u);
    }
}

TEST_F(PluginTest, aPlatformWithoutHooksTakesNoOptions)
{
    options.platform = "plain:argument";
    EXPECT_EQ(mistake(), inDirectory("platform_plain.so") + ": this platform takes no argument and no options");
    options.platform = "plain";
    options.platformOptions = {{"colour", "green"}};
    EXPECT_EQ(mistake(), inDirectory("platform_plain.so") + ": this platform takes no argument and no options");
}

TEST_F(PluginTest, refusesALibraryThatIsNoModule)
{
    options.module = inDirectory("module_without_tree.so");
    EXPECT_EQ(error(), options.module + ": the library registers no MIB tree, so it is no module");
    options.module = inDirectory("module_without_callback.so");
    EXPECT_EQ(error(), options.module + ": the library registers no callback, so it is no module");
}

TEST_F(PluginTest, refusesAModuleWhoseTreeIsBroken)
{
    options.module = inDirectory("module_broken_tree.so");
    EXPECT_EQ(error(), options.module + ": the tree \"TEST\" is refused: its root has a parent or a sibling");
}

TEST_F(PluginTest, refusesASecondModuleOfTheSameName)
{
    Plugin plugin(options);
    options.platform = "plain";
    options.module = inDirectory("module_again.so");
    EXPECT_EQ(error(), options.module + ": a tree named \"TEST\" is registered already");
    EXPECT_EQ(valueOfScalar(plugin), 0u);
}

TEST_F(PluginTest, aModuleWorksWithoutALog)
{
    options.log = nullptr;
    Plugin plugin(options);
    EXPECT_EQ(valueOfScalar(plugin), 0u);
}

TEST_F(PluginTest, theModuleThatShipsServesADevice)
{
    options.module = IPMIB_LIBRARY;
    options.platform = "scripted:31";
    Random random(31);
    makeRandomDevice(random); // the same in this program, to know what there is to find
    Plugin plugin(options);
    const Instances instances = instancesOfDevice(servedColumns(*Registry::ofProcess().trees().front().root));
    ASSERT_GT(instances.all().size(), 100u);
    checkWalk(plugin.resolver(), instances, Identifier{1}, [](OidView, const Value &) {});
}

TEST(PluginDirectory, isSeenFromTheProgramsFolder)
{
    const std::string directory = pluginDirectoryOfProgram("../lib/ipmib");
    EXPECT_EQ(directory.front(), '/');
    EXPECT_TRUE(directory.ends_with("/lib/ipmib")) << directory;
    EXPECT_EQ(directory.find(".."), std::string::npos);
}

} // namespace
} // namespace ipmib::host::testing
