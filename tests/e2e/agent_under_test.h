// SPDX-License-Identifier: BSD-3-Clause
// The fixture of the end-to-end tests: ipmibd as a user starts it, on loopback where nobody else is, and net-snmp's own
// programs as its clients.
#pragma once

#include "e2e/command.h"
#include "netns/namespace.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace ipmib::e2e
{

// Who asks, as options of a net-snmp program.
inline const Words publicV1 = {"-v1", "-c", "public"};
inline const Words publicV2 = {"-v2c", "-c", "public"};
inline const Words writerV2 = {"-v2c", "-c", "private"};
inline const Words aliceV3 = {"-v3", "-l",           "authPriv", "-u",  "alice", "-a",          "SHA",
                              "-A",  "alice's auth", "-x",       "AES", "-X",    "alice's priv"};

// Lets all of these in.
extern const std::string everybody;

class AgentTest : public testing::Test
{
  protected:
    void SetUp() override;
    void TearDown() override;

    // The command line of ipmibd on the scripted device, listening on address().
    Words agentWords(const Words &options = {}) const;
    // Starts it in the foreground with this configuration file and waits until it says that it is ready.
    void startAgent(const std::string &configuration = everybody, const Words &options = {});
    // Starts a program that says when it is ready.
    void startProgram(const Words &words);
    // For all programs that are started from here on.
    void setEnvironment(const std::string &name, const std::string &value) { environment_[name] = value; }
    // Ends it as its user would; everything must have gone well.
    void stopAgent();
    Command &agent() { return *agent_; }
    // What it has logged so far.
    Words log() const { return linesOf(agent_->output()); }
    unsigned timesLogged(const std::string &line) const;
    // Waits for the next message to the service manager.
    std::string notification();

    // One of net-snmp's programs, with numeric identifiers.
    Result snmp(const std::string &program, const Words &who, const Words &arguments) const;
    // The rows of a walk that went well.
    Words walk(const std::string &program, const Words &who, const Words &options, const std::string &root) const;
    // With what every program here is started.
    const Environment &environment() const { return environment_; }
    // What ipmibd does that does not come to serve.
    Result runAgent(const Words &words) const;
    // Starts it as a daemon, which writes its process id to path("pid"); it is ended with the test at the latest.
    Result startDaemon(const Words &words);
    void endDaemon();
    pid_t daemon() const { return daemon_; }

    std::string address(const std::string &transport = "udp") const;
    std::uint16_t port() const { return port_; }
    std::string writeFile(const std::string &name, const std::string &content) const;
    std::string path(const std::string &name) const { return directory_ / name; }
    // Set when the test has a network of its own.
    const netns::Namespace *network() const { return network_ ? &*network_ : nullptr; }

  private:
    std::optional<netns::Namespace> network_;
    std::optional<netns::Inside> inside_;
    std::filesystem::path directory_;
    Environment environment_;
    std::uint16_t port_ = 0;
    int manager_ = -1;
    std::unique_ptr<Command> agent_;
    pid_t daemon_ = 0;
};

// Where the build put them.
extern const char *const agentProgram;
extern const char *const controlProgram; // ipmibctl
extern const char *const scriptedPlatform;
extern const char *const emptyLibrary; // a shared library with nothing in it

} // namespace ipmib::e2e
