// SPDX-License-Identifier: BSD-3-Clause
// The messages that a service manager receives.

#include "service_manager.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace ipmib::agent
{

namespace
{

class Manager
{
  public:
    Manager() : descriptor_(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        // An address of the family alone has the kernel choose an abstract name.
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        bind(descriptor_, reinterpret_cast<const sockaddr *>(&address), sizeof address.sun_family);
        socklen_t size = sizeof address;
        getsockname(descriptor_, reinterpret_cast<sockaddr *>(&address), &size);
        const std::size_t length = size - offsetof(sockaddr_un, sun_path) - 1;
        setenv("NOTIFY_SOCKET", ("@" + std::string(address.sun_path + 1, length)).c_str(), 1);
    }
    ~Manager()
    {
        unsetenv("NOTIFY_SOCKET");
        close(descriptor_);
    }

    std::string received() const
    {
        char text[256];
        const ssize_t length = recv(descriptor_, text, sizeof text, 0);
        return length < 0 ? "nothing" : std::string(text, static_cast<std::size_t>(length));
    }

  private:
    int descriptor_;
};

TEST(ServiceNotify, ReadyAndStopping)
{
    const Manager manager;
    notifyReady();
    EXPECT_EQ(manager.received(), "READY=1");
    notifyStopping();
    EXPECT_EQ(manager.received(), "STOPPING=1");
}

TEST(ServiceNotify, ReloadingTellsSinceWhen)
{
    const Manager manager;
    notifyReloading();
    const std::string message = manager.received();
    const std::string beginning = "RELOADING=1\nMONOTONIC_USEC=";
    EXPECT_EQ(message.substr(0, beginning.size()), beginning);
    EXPECT_GT(std::atoll(message.c_str() + beginning.size()), 0);
}

TEST(ServiceNotify, WithoutAManagerNothingHappens)
{
    const Manager manager;
    unsetenv("NOTIFY_SOCKET");
    notifyReady();
    EXPECT_EQ(manager.received(), "nothing");
}

TEST(ServiceNotify, AWatchedProcessKnowsTheManagersPatience)
{
    const Manager manager;
    EXPECT_EQ(watchdogPatience().count(), 0);
    setenv("WATCHDOG_USEC", "30000000", 1);
    EXPECT_EQ(watchdogPatience(), std::chrono::seconds(30));
    setenv("WATCHDOG_PID", std::to_string(getpid()).c_str(), 1);
    EXPECT_EQ(watchdogPatience(), std::chrono::seconds(30));
    setenv("WATCHDOG_PID", std::to_string(getppid()).c_str(), 1);
    EXPECT_EQ(watchdogPatience().count(), 0) << "another process is watched";
    unsetenv("WATCHDOG_PID");
    unsetenv("WATCHDOG_USEC");
    notifyAlive();
    EXPECT_EQ(manager.received(), "WATCHDOG=1");
}

} // namespace

} // namespace ipmib::agent
