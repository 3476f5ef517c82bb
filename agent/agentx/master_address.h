// SPDX-License-Identifier: BSD-3-Clause
// Where an AgentX master is reached, as the user writes it: a path, unix:PATH, tcp:HOST:PORT or tcp6:[ADDRESS]:PORT.
#pragma once

#include <sys/socket.h>

#include <optional>
#include <string>

namespace ipmib::agent::agentx
{

struct MasterAddress {
    std::string text; // as it was written
    std::string path; // of a local socket; else
    std::string host;
    std::string port;
    int family = AF_UNSPEC;

    bool isLocal() const { return !path.empty(); }
};

// Throws host::UsageError.
MasterAddress parseAddress(const std::string &text);

// The same for the kernel.
struct Place {
    sockaddr_storage address;
    socklen_t size;
};

// Nothing where a name must be looked up first.
std::optional<Place> placeWithoutLookup(const MasterAddress &address);

// A socket that does not block, with its connection under way or made.
struct Begun {
    int descriptor;
    bool connected;
};

// Throws std::system_error.
Begun beginToConnect(const Place &place);

} // namespace ipmib::agent::agentx
