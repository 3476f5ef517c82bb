// SPDX-License-Identifier: BSD-3-Clause
// A network namespace that lives as long as the test that made it. It has no name, so the kernel removes it, with all
// that is in it, also when the test crashes.
#pragma once

#include <gtest/gtest.h>
#include <nlohmann/json_fwd.hpp>

#include <initializer_list>
#include <string>

namespace ipmib::netns
{

// Why this process cannot make namespaces; empty when it can.
std::string unavailable();

// For the first line of a test.
#define IPMIB_NEEDS_NAMESPACES()                                                                                       \
    if (const std::string why = ipmib::netns::unavailable(); !why.empty()) {                                           \
        GTEST_SKIP() << why;                                                                                           \
    }                                                                                                                  \
    static_assert(true)

// Made with its loopback interface up, and with no duplicate address detection, so that addresses count at once.
class Namespace
{
  public:
    Namespace();
    ~Namespace();
    Namespace(const Namespace &) = delete;
    Namespace &operator=(const Namespace &) = delete;

    // Runs a shell command in it and returns what it wrote to standard output. A command that fails is a test failure.
    std::string run(const std::string &command) const;
    nlohmann::json json(const std::string &command) const;
    // "net/ipv6/conf/all/forwarding"
    void sysctl(const std::string &name, const std::string &value) const;
    std::string sysctl(const std::string &name) const;
    std::string file(const std::string &path) const;

    // Waits until these interfaces, which are up, have a link-local address, and may use all of their IPv6 addresses:
    // the kernel comes to that some time after the command, with routes and announcements of its own.
    void waitForLinkLocals(std::initializer_list<std::string> interfaces) const;

    // Connects two namespaces (or one with itself) by a veth pair, both ends up and with their link-local addresses.
    static void connect(const Namespace &a, const std::string &nameInA, const Namespace &b, const std::string &nameInB);

    // For `ip link set DEVICE netns PATH`, and for setns.
    std::string path() const;
    int descriptor() const { return fd_; }

  private:
    int fd_ = -1;
};

// While it lives, the calling thread is in the namespace: sockets it opens and files of /proc/sys/net it reads are
// those of the namespace.
class Inside
{
  public:
    explicit Inside(const Namespace &space);
    ~Inside();
    Inside(const Inside &) = delete;
    Inside &operator=(const Inside &) = delete;

  private:
    int outside_ = -1;
};

} // namespace ipmib::netns
