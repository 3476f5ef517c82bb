// SPDX-License-Identifier: BSD-3-Clause
// Every way in which the configuration file may come, change and go while it is followed.
#include "advertisements/radvd_file.h"

#include "core/log.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

namespace ipmib::platform
{
namespace
{

namespace fs = std::filesystem;

std::vector<std::string> logged;

class RadvdFileTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "radvdXXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
        ASSERT_TRUE(loop_.open());
        logged.clear();
        setLogSink([](int, const char *line) { logged.emplace_back(line); });
    }
    void TearDown() override
    {
        setLogSink(nullptr);
        fs::remove_all(folder_);
    }

    void write(const fs::path &path, const std::string &text) { std::ofstream(path) << text; }
    void start(const fs::path &path) { file_.start(loop_, path); }

    // Handles what the kernel reports; false when it reports nothing within a second.
    bool dispatch()
    {
        pollfd wait{loop_.descriptor(), POLLIN, 0};
        if (poll(&wait, 1, 1'000) != 1) {
            return false;
        }
        while (poll(&wait, 1, 0) == 1) {
            loop_.run();
        }
        return true;
    }
    // The one interface of the file tells which version of it is in use.
    bool names(const char *interface) const { return file_.find(interface) != nullptr; }

    fs::path folder_;
    PlatformLoop loop_;
    RadvdFile file_;
};

TEST_F(RadvdFileTest, isReadAtTheStart)
{
    write(folder_ / "radvd.conf", "interface one { };");
    start(folder_ / "radvd.conf");
    EXPECT_TRUE(names("one"));
    EXPECT_FALSE(names("two"));
}

TEST_F(RadvdFileTest, mayBeMissingAndAppear)
{
    start(folder_ / "radvd.conf");
    EXPECT_TRUE(logged.empty());
    write(folder_ / "radvd.conf", "interface one { };");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("one"));
}

TEST_F(RadvdFileTest, isReadAgainWhenRewritten)
{
    write(folder_ / "radvd.conf", "interface one { };");
    start(folder_ / "radvd.conf");
    write(folder_ / "radvd.conf", "interface two { };");
    EXPECT_TRUE(dispatch());
    EXPECT_FALSE(names("one"));
    EXPECT_TRUE(names("two"));
}

TEST_F(RadvdFileTest, isReadAgainWhenAnotherFileIsRenamedOverIt)
{
    write(folder_ / "radvd.conf", "interface one { };");
    start(folder_ / "radvd.conf");
    for (const char *name : {"two", "three"}) {
        write(folder_ / "new", std::string("interface ") + name + " { };");
        fs::rename(folder_ / "new", folder_ / "radvd.conf");
        EXPECT_TRUE(dispatch());
        EXPECT_TRUE(names(name));
    }
}

TEST_F(RadvdFileTest, isReadOnceItsWriterIsDone)
{
    start(folder_ / "radvd.conf");
    std::ofstream writer(folder_ / "radvd.conf");
    writer << "interface one {" << std::flush;
    dispatch();
    EXPECT_TRUE(logged.empty()) << logged[0];
    writer << " };" << std::flush;
    writer.close();
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("one"));
}

TEST_F(RadvdFileTest, namesNothingWhenItIsRemoved)
{
    write(folder_ / "radvd.conf", "interface one { };");
    start(folder_ / "radvd.conf");
    fs::remove(folder_ / "radvd.conf");
    EXPECT_TRUE(dispatch());
    EXPECT_FALSE(names("one"));
}

TEST_F(RadvdFileTest, afterAMistakeTheLastGoodSettingsStay)
{
    const std::string path = folder_ / "radvd.conf";
    write(path, "interface one { };");
    start(path);
    logged.clear();
    write(path, "interface two {\n");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("one"));
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0], "radvd: " + path + ":2: expected an option or '}', found the end of the file; " +
                             "the settings stay as they were");
    file_.reload();
    EXPECT_EQ(logged.size(), 1u) << "the same mistake is logged once";
    write(path, "interface two { };");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("two"));
}

TEST_F(RadvdFileTest, whatRadvdWouldRefuseIsLogged)
{
    const std::string path = folder_ / "radvd.conf";
    write(path, "\ninterface one { AdvSendAdvert on; MaxRtrAdvInterval 4; };");
    start(path);
    ASSERT_EQ(logged.size(), 2u);
    EXPECT_EQ(logged[1], "radvd: " + path + ":2: radvd sends nothing on one: MinRtrAdvInterval, by default 0.33 * " +
                             "MaxRtrAdvInterval, must be 3 seconds to 0.75 * MaxRtrAdvInterval");
}

TEST_F(RadvdFileTest, mayLieInAFolderThatComesLater)
{
    start(folder_ / "a" / "b" / "radvd.conf");
    fs::create_directories(folder_ / "a" / "b");
    EXPECT_TRUE(dispatch());
    write(folder_ / "a" / "b" / "radvd.conf", "interface one { };");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("one"));
    fs::remove_all(folder_ / "a");
    EXPECT_TRUE(dispatch());
    EXPECT_FALSE(names("one"));
    fs::create_directories(folder_ / "a" / "b");
    write(folder_ / "a" / "b" / "radvd.conf", "interface two { };");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("two"));
}

TEST_F(RadvdFileTest, mayBeALinkToAFileThatChanges)
{
    fs::create_directory(folder_ / "real");
    write(folder_ / "real" / "conf", "interface one { };");
    start(folder_ / "radvd.conf");
    fs::create_symlink(folder_ / "real" / "conf", folder_ / "radvd.conf");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("one"));
    write(folder_ / "real" / "conf", "interface two { };");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("two"));
}

TEST_F(RadvdFileTest, mayBeALinkWithinItsFolder)
{
    write(folder_ / "other", "interface one { };");
    fs::create_symlink("other", folder_ / "radvd.conf");
    start(folder_ / "radvd.conf");
    EXPECT_TRUE(names("one"));
    write(folder_ / "other", "interface two { };");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("two"));
}

TEST_F(RadvdFileTest, otherFilesOfTheFolderDoNotMatter)
{
    write(folder_ / "radvd.conf", "interface one { };");
    start(folder_ / "radvd.conf");
    logged.clear();
    write(folder_ / "radvd.conf.bak", "nonsense");
    EXPECT_TRUE(dispatch());
    EXPECT_TRUE(names("one"));
    EXPECT_TRUE(logged.empty());
}

TEST_F(RadvdFileTest, whatIsNotAFileIsAComplaint)
{
    const std::string path = folder_ / "radvd.conf";
    fs::create_directory(path);
    start(path);
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0], "radvd: " + path + ": cannot be read: Is a directory; the settings stay as they were");
}

TEST_F(RadvdFileTest, theDeviceNullNamesNothingAndIsNotFollowed)
{
    fs::create_symlink("/dev/null", folder_ / "radvd.conf");
    for (const fs::path &path : {fs::path("/dev/null"), folder_ / "radvd.conf"}) {
        RadvdFile file;
        file.start(loop_, path);
        EXPECT_TRUE(logged.empty()) << logged[0];
        EXPECT_EQ(file.find("one"), nullptr);
        std::ofstream("/dev/null") << "interface one { };";
        pollfd wait{loop_.descriptor(), POLLIN, 0};
        EXPECT_EQ(poll(&wait, 1, 0), 0) << "everybody writes there, and would wake us up";
    }
}

TEST_F(RadvdFileTest, devicesAndPipesAreComplaintsAndKeepNobodyWaiting)
{
    const std::string path = folder_ / "radvd.conf";
    const std::string complaint = ": cannot be read: it is no regular file; the settings stay as they were";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    start(path);
    EXPECT_EQ(logged, (std::vector<std::string>{"radvd: " + path + complaint}));
    RadvdFile zero;
    zero.start(loop_, "/dev/zero");
    EXPECT_EQ(logged.back(), "radvd: /dev/zero" + complaint);
}

} // namespace
} // namespace ipmib::platform
