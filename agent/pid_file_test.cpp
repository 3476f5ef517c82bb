// SPDX-License-Identifier: BSD-3-Clause
// The file of the process id appears, tells the id and disappears, and leaves alone what is another's.

#include "pid_file.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace ipmib::agent
{

namespace
{

namespace fs = std::filesystem;

class PidFileTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = testing::TempDir() + "pid_file_test.XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        folder_ = name;
    }
    void TearDown() override { fs::remove_all(folder_); }

    std::string path(const std::string &name = "pid") const { return folder_ / name; }
    void put(const std::string &text, const std::string &name = "pid") const { std::ofstream(path(name)) << text; }
    std::string content(const std::string &name = "pid") const
    {
        std::string text;
        std::getline(std::ifstream(path(name)), text, '\0');
        return text;
    }
    // Why it does not become the file, without the part that is always the same.
    static std::string refusal(const std::string &of)
    {
        try {
            const PidFile file(of);
        } catch (const std::runtime_error &error) {
            const std::string beginning = "cannot write the process id to " + of + ": ";
            const std::string text = error.what();
            return text.starts_with(beginning) ? text.substr(beginning.size()) : text;
        }
        return "";
    }

  private:
    fs::path folder_;
};

TEST_F(PidFileTest, HoldsTheIdAsLongAsItLives)
{
    {
        const PidFile file(path());
        file.write();
        EXPECT_EQ(content(), std::to_string(getpid()) + "\n");
    }
    EXPECT_FALSE(fs::exists(path()));
}

TEST_F(PidFileTest, WhatARunBeforeLeftIsTakenOver)
{
    for (const std::string &left : {std::string(), std::string("2147483647\n"), std::to_string(getpid())}) {
        put(left);
        const PidFile file(path());
        file.write();
        EXPECT_EQ(content(), std::to_string(getpid()) + "\n");
    }
}

TEST_F(PidFileTest, NoPathNoFile)
{
    const PidFile file("");
    file.write();
}

TEST_F(PidFileTest, APathThatCannotBeWrittenIsNamed)
{
    EXPECT_EQ(refusal("/nonexistent/pid"), "No such file or directory");
}

TEST_F(PidFileTest, OnlyARegularFileWillDo)
{
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkdir(path("folder").c_str(), 0700), 0);
    put("1\n", "target");
    fs::create_symlink(path("target"), path("link"));
    fs::create_symlink(path("nowhere"), path("loose"));
    for (const char *name : {"fifo", "folder", "link", "loose"}) {
        EXPECT_EQ(refusal(path(name)), "it is not a regular file");
        EXPECT_TRUE(fs::is_symlink(path(name)) || fs::exists(path(name))) << name << " was removed";
    }
    EXPECT_EQ(content("target"), "1\n");
    EXPECT_FALSE(fs::exists(path("nowhere")));
}

TEST_F(PidFileTest, WhatHoldsSomethingElseIsLeftAlone)
{
    for (const std::string text :
         {"root:x:0:0::/root:/bin/sh\n", "12 34\n", "-1\n", "0\n", "\n", "12345678901234567890\n",
          "1\n                                                  x"}) {
        put(text);
        EXPECT_EQ(refusal(path()), "it holds something else");
        EXPECT_EQ(content(), text);
    }
}

TEST_F(PidFileTest, ThatOfAProcessThatRunsIsLeftAlone)
{
    const std::string parent = std::to_string(getppid());
    put(parent + "\n");
    EXPECT_EQ(refusal(path()), "it is that of process " + parent + ", which runs");
    EXPECT_EQ(content(), parent + "\n");
}

// After a restart of the machine, or of a container, a number means another process.
TEST_F(PidFileTest, ANumberFromBeforeThatProcessBeganMeansNobody)
{
    put(std::to_string(getppid()) + "\n");
    fs::last_write_time(path(), fs::file_time_type::clock::now() - std::chrono::hours(24 * 365 * 20));
    EXPECT_EQ(refusal(path()), "");
}

TEST_F(PidFileTest, WhileItIsOursNobodyElseGetsIt)
{
    const PidFile file(path());
    file.write();
    EXPECT_EQ(refusal(path()), "another process has locked it");
    EXPECT_EQ(content(), std::to_string(getpid()) + "\n");
}

TEST_F(PidFileTest, OneThatIsNoLongerOursStays)
{
    {
        const PidFile file(path());
        file.write();
        fs::remove(path());
        put("another's");
    }
    EXPECT_EQ(content(), "another's");
}

} // namespace

} // namespace ipmib::agent
