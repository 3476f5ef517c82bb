// SPDX-License-Identifier: BSD-3-Clause
// IPv4 traffic by interface, which Linux does not count: a table of our own in the packet filter counts it.
#pragma once

#include "accounting/accounting_table.h"
#include "accounting/netfilter_socket.h"

#include <ipmib/records.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string>

namespace ipmib::platform
{

class Ipv4Accounting
{
  public:
    struct Settings {
        // Whether the table belongs to this process, where the kernel can do that (Linux 5.12).
        bool owned = true;
        // How many interfaces it can count; 0 for what the kernel sets, 65535.
        std::uint32_t interfaces = 0;
    };

    Ipv4Accounting() : Ipv4Accounting(Settings()) {}
    explicit Ipv4Accounting(const Settings &settings) : settings_(settings) {}
    ~Ipv4Accounting() { stop(); }
    Ipv4Accounting(const Ipv4Accounting &) = delete;
    Ipv4Accounting &operator=(const Ipv4Accounting &) = delete;

    // Makes the table. The answer, when that fails, is one line for the user, and nothing is left behind. Needs
    // CAP_NET_ADMIN then and at every read.
    std::string start();
    // Removes the table.
    void stop();
    // Whether somebody asked for it.
    bool counts() const { return socket_.isOpen(); }

    // What the interface has been counted to, read from the kernel now; zeros where nothing was counted.
    IpMibIfStat countersOf(std::uint32_t ifIndex);
    // An interface is gone: one that is given its index later starts from nothing, and its place is free.
    void linkRemoved(std::uint32_t ifIndex);
    // How many interfaces there are: the kernel does not say when it has no place for another.
    void checkRoomFor(std::size_t interfaces);

  private:
    using Row = std::array<std::optional<Traffic>, std::size(countedSets)>;

    NetfilterSocket::Outcome makeTable();
    int read(std::uint32_t ifIndex, Row &row);
    void remake();
    void report(int error);

    Settings settings_;
    NetfilterSocket socket_;
    int reported_ = 0; // the errno that the log has last been told, so that it is told once
    bool fullReported_ = false;
};

} // namespace ipmib::platform
