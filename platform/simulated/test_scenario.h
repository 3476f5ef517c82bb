// SPDX-License-Identifier: BSD-3-Clause
// For tests: scenarios as text, read into a device or put to the services at a given time.
#pragma once

#include "scenario/read.h"

#include <ipmib/platform_hooks.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>

extern "C" const IpmibPlatformHooks ipmib_platform_hooks;

namespace ipmib::simulated
{

inline const IpmibPlatformHooks &hooks = ipmib_platform_hooks;

// A file of the test's own, as long as this lives.
class ScenarioFile
{
  public:
    explicit ScenarioFile(const std::string &text)
        : path_(testing::TempDir() + "scenario-" + std::to_string(getpid()) + "-" + std::to_string(count()++) + ".json")
    {
        write(text);
    }
    ~ScenarioFile() { std::remove(path_.c_str()); }
    ScenarioFile(const ScenarioFile &) = delete;
    ScenarioFile &operator=(const ScenarioFile &) = delete;

    void write(const std::string &text) const { std::ofstream(path_) << text; }
    const std::string &path() const { return path_; }

  private:
    static unsigned &count()
    {
        static unsigned files = 0;
        return files;
    }

    std::string path_;
};

inline Device deviceOf(const std::string &text)
{
    return readScenario(ScenarioFile(text).path()).device;
}

// The answer of a start that failed.
inline std::string start(const std::string &path, const std::string &at = "")
{
    const IpmibPlatformOption option{"at", at.c_str()};
    const IpmibPlatformHost host{nullptr, path.c_str(), &option, at.empty() ? 0u : 1u};
    char error[300] = "";
    const int result = hooks.start(&host, error, sizeof error);
    EXPECT_EQ(result != 0, *error != '\0');
    return error;
}

// The services answer for the scenario as it is so many seconds after its start.
class Running
{
  public:
    Running(const std::string &path, unsigned seconds) { EXPECT_EQ(start(path, std::to_string(seconds)), ""); }
    ~Running() { hooks.stop(); }
    Running(const Running &) = delete;
    Running &operator=(const Running &) = delete;
};

inline std::string example(const std::string &name)
{
    return IPMIB_SOURCE_DIR "/examples/" + name;
}

} // namespace ipmib::simulated
