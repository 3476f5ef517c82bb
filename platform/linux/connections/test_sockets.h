// SPDX-License-Identifier: BSD-3-Clause
// For tests: sockets in the namespace that the thread is in.
#pragma once

#include "core/descriptor.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace ipmib::platform::testing
{

// An address of either version, with the number of an interface behind a '%' where it needs one, and a port.
struct Place {
    Place(const std::string &address, std::uint16_t port);
    const sockaddr *get() const { return reinterpret_cast<const sockaddr *>(&storage); }
    int family() const { return storage.ss_family; }

    sockaddr_storage storage{};
    socklen_t size = 0;
};

// A bound socket. `options` are set before: pairs of a level and an option that becomes 1.
Descriptor bound(int type, const Place &place, const std::vector<std::pair<int, int>> &options = {});
Descriptor listening(const Place &place, const std::vector<std::pair<int, int>> &options = {});
// What has begun to connect does not wait.
Descriptor connecting(const Place &place);
// Connected by way of a listener that waits there.
std::pair<Descriptor, Descriptor> connection(const Descriptor &listener, const Place &place);
// Writes until the other end takes no more.
void fill(const Descriptor &socket);
// A segment that asks for a connection, from an address that is nobody's.
void sendSyn(const std::string &from, const std::string &to, std::uint16_t port);

} // namespace ipmib::platform::testing
