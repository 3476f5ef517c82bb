// SPDX-License-Identifier: BSD-3-Clause
// The file of the process id appears, tells the id and disappears.

#include "pid_file.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace ipmib::agent
{

namespace
{

TEST(PidFile, HoldsTheIdAsLongAsItLives)
{
    const std::string path = testing::TempDir() + "pid_file_test." + std::to_string(getpid());
    std::ofstream(path) << "12345678901234567890 from a run before\n";
    {
        const PidFile file(path);
        file.write();
        std::string line;
        std::getline(std::ifstream(path), line, '\0');
        EXPECT_EQ(line, std::to_string(getpid()) + "\n");
    }
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(PidFile, NoPathNoFile)
{
    const PidFile file("");
    file.write();
}

TEST(PidFile, APathThatCannotBeWrittenIsNamed)
{
    try {
        const PidFile file("/nonexistent/pid");
        FAIL() << "it was accepted";
    } catch (const std::runtime_error &error) {
        EXPECT_STREQ(error.what(), "cannot write the process id to /nonexistent/pid: No such file or directory");
    }
}

} // namespace

} // namespace ipmib::agent
