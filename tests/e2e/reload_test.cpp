// SPDX-License-Identifier: BSD-3-Clause
// A configuration that cannot be read anew leaves the old one in force.

#include "e2e/service_under_test.h"

#include <sys/resource.h>

namespace ipmib::e2e
{

namespace
{

class ReloadTest : public ServiceTest
{
  protected:
    // Ends all access that there was, if it takes effect.
    void replaceConfiguration(const std::string &file, const std::string &more = "")
    {
        writeFile(file, "rocommunity other 127.0.0.1\n" + more);
    }
    void expectOldConfiguration() const
    {
        EXPECT_EQ(snmp("snmpget", publicV2, {hopLimit}).output, hopLimitRow);
        EXPECT_NE(snmp("snmpget", {"-v2c", "-c", "other", "-t", "1"}, {hopLimit}).status, 0);
    }
    void expectNewConfiguration() const
    {
        EXPECT_EQ(snmp("snmpget", {"-v2c", "-c", "other"}, {hopLimit}).output, hopLimitRow);
        EXPECT_NE(snmp("snmpget", {"-v2c", "-c", "public", "-t", "1"}, {hopLimit}).status, 0);
    }
    // No descriptor can be opened while these are as many as it may have.
    void limitDescriptors(rlim_t limit)
    {
        const rlimit limits{limit, 1024};
        ASSERT_EQ(prlimit(agent().pid(), RLIMIT_NOFILE, &limits, nullptr), 0);
    }
    rlim_t lowestFreeDescriptor()
    {
        // Once it has answered, nothing of its start is open any more.
        EXPECT_EQ(snmp("snmpget", publicV2, {hopLimit}).output, hopLimitRow);
        rlim_t number = 0;
        while (
            std::filesystem::is_symlink("/proc/" + std::to_string(agent().pid()) + "/fd/" + std::to_string(number))) {
            ++number;
        }
        return number;
    }
};

TEST_F(ReloadTest, WithoutFreeDescriptorsAllStaysAsItWas)
{
    startAgent(everybody);
    replaceConfiguration("test.conf");
    limitDescriptors(lowestFreeDescriptor());
    reload();
    EXPECT_EQ(timesLogged("cannot read the configuration file " + path("test.conf") +
                          ": Too many open files, keeping the old configuration"),
              1u)
        << agent().output();
    expectOldConfiguration();
    limitDescriptors(1024);
    reload();
    expectNewConfiguration();
    stopAgent();
}

TEST_F(ReloadTest, WhatTheLibrarySaysOfItIsPrintable)
{
    startAgent(everybody);
    replaceConfiguration("test.conf", "turn\x1b[7m\x9bround on\n");
    reload();
    EXPECT_EQ(timesLogged(path("test.conf") + ": line 2: Warning: Unknown token: turn\\x1b[7m\\x9bround."), 1u)
        << agent().output();
    expectNewConfiguration();
    stopAgent();
}

TEST_F(ReloadTest, TheServicesOwnFilesAreLookedAtToo)
{
    startService(createsAlice);
    replaceConfiguration("ipmibd.conf");
    limitDescriptors(lowestFreeDescriptor());
    reload();
    expectOldConfiguration();
    expectAlice();
    limitDescriptors(1024);
    endService();
}

TEST_F(ReloadTest, FilesThatFilesIncludeAreLookedAtToo)
{
    std::filesystem::create_directory(path("more"));
    writeFile("more/one.conf", "rocommunity public 127.0.0.1\n");
    startAgent("includeDir " + path("more") + "\nincludeFile included.conf\n" + "includeFile " +
               path("never-there.conf") + "\n"); // an obstacle from the beginning is none
    EXPECT_NE(snmp("snmpget", {"-v2c", "-c", "other", "-t", "1"}, {hopLimit}).status, 0);
    writeFile("included.conf", "");
    std::filesystem::remove(path("more/one.conf"));
    replaceConfiguration("test.conf", "includeFile included.conf\nincludeDir " + path("other") + "\n");
    reload();
    EXPECT_EQ(timesLogged("cannot read the configuration file " + path("other") +
                          ": No such file or directory, keeping the old configuration"),
              1u)
        << agent().output();
    expectOldConfiguration();
    std::filesystem::create_directory(path("other"));
    reload();
    expectNewConfiguration();
    endService();
}

} // namespace

} // namespace ipmib::e2e
