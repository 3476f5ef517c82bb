// SPDX-License-Identifier: BSD-3-Clause
// What the agent's forwarding tables say of routes: each function is the one of IpmibRouteHooks that its name says.
#pragma once

#include "core/mirror.h"
#include "routes/forwarding_table.h"

#include <string>

namespace ipmib::platform
{

class LinuxPlatform;

class Routes
{
  public:
    explicit Routes(LinuxPlatform &platform) : platform_(platform) {}

    // Which of the kernel's tables are shown, before routes are followed: numbers, "main", "local", "default" or "all",
    // with commas between them. The answer, when it is wrong, is one line for the user.
    std::string takeTables(const std::string &list);

    // The answer, when it fails, is one line for the user.
    std::string follow();
    void limit(std::uint64_t rows) { limit_.most = rows; }
    std::uint32_t areRead();
    std::uint64_t count(std::uint32_t version);
    std::uint64_t discards();
    bool find(const IpmibRouteKey &key, IpmibRoute &row);
    bool next(const IpmibRouteKey &key, IpmibRoute &row);
    bool match(std::uint32_t version, const std::uint8_t *address, IpmibRoute &row);

    // Octets of all routes, for measurements.
    std::size_t memory() const;

  private:
    struct Followed {
        Mirror *mirror = nullptr;
        unsigned endedBefore = 0; // readings, in which routes were not looked at
    };
    ForwardingTable *of(std::uint32_t version);
    bool isRead(const Followed &followed) const;
    void tidy();

    LinuxPlatform &platform_;
    RouteTables tables_;
    RouteLimit limit_;
    std::unique_ptr<ForwardingTable> ipv4_; // null until they are followed
    std::unique_ptr<ForwardingTable> ipv6_;
    Followed followed_[2];
    Timer tidy_;
};

} // namespace ipmib::platform
