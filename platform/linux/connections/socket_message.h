// SPDX-License-Identifier: BSD-3-Clause
// What the kernel's sock_diag says of one socket, as a row of the tables of connections.
#pragma once

#include "connection_table.h"
#include "core/rtnetlink.h"

#include <cstdint>

namespace ipmib::platform
{

// Asks for all sockets of a protocol (IPPROTO_TCP, IPPROTO_UDP) and a family (AF_INET, AF_INET6), in all states.
bool askForSockets(Rtnetlink &socket, std::uint8_t family, std::uint8_t protocol);

struct SocketRow {
    std::uint32_t table; // IPMIB_TCP_CONNECTIONS...
    ConnectionRow row;
};

// False for what is no socket of that protocol.
bool readSocket(const nlmsghdr &message, std::uint8_t protocol, SocketRow &socket);

} // namespace ipmib::platform
