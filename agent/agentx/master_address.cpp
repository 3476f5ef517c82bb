// SPDX-License-Identifier: BSD-3-Clause
// The library's transports connect while everything else waits, and keep the reason of a failure to themselves.

#include "agent/agentx/master_address.h"

#include "host/command_line.h"

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace ipmib::agent::agentx
{

namespace
{

constexpr const char *agentxPort = "705";
constexpr std::size_t longestPath = sizeof(sockaddr_un{}.sun_path) - 1;

// A host that has gone without a word is noticed within some ten seconds, by the kernel, without anybody waking up
// here.
void noticeSilence(int descriptor)
{
    const auto set = [descriptor](int level, int option, int value) {
        setsockopt(descriptor, level, option, &value, sizeof value);
    };
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, 10);
    set(IPPROTO_TCP, TCP_KEEPINTVL, 3);
    set(IPPROTO_TCP, TCP_KEEPCNT, 3);
    set(IPPROTO_TCP, TCP_USER_TIMEOUT, 10000);
    set(IPPROTO_TCP, TCP_NODELAY, 1);
}

} // namespace

Begun beginToConnect(const Place &place)
{
    const int family = place.address.ss_family;
    const int descriptor = socket(family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    if (family != AF_UNIX) {
        noticeSilence(descriptor);
    }
    const bool connected = connect(descriptor, reinterpret_cast<const sockaddr *>(&place.address), place.size) == 0;
    if (!connected && errno != EINPROGRESS) {
        const int reason = errno;
        close(descriptor);
        throw std::system_error(reason, std::generic_category());
    }
    return {descriptor, connected};
}

MasterAddress parseAddress(const std::string &text)
{
    const auto fail = [&](const char *what) { throw host::UsageError("-x " + text + ": " + what); };
    const auto follows = [&](const char *start) { return text.starts_with(start); };
    MasterAddress address;
    address.text = text;
    if (follows("/") || follows("unix:")) {
        address.path = follows("/") ? text : text.substr(text.find(':') + 1);
        if (address.path.empty()) {
            fail("the path is missing");
        }
        if (address.path.size() > longestPath) {
            fail("the path is too long for a socket");
        }
        return address;
    }
    if (!follows("tcp:") && !follows("tcp6:")) {
        fail("an AgentX master is at a path, unix:PATH, tcp:HOST:PORT or tcp6:[ADDRESS]:PORT");
    }
    address.family = follows("tcp6:") ? AF_INET6 : AF_INET;
    std::string rest = text.substr(text.find(':') + 1);
    address.port = agentxPort;
    const std::size_t bracket = rest.starts_with('[') ? rest.find(']') : std::string::npos;
    const std::size_t colon = rest.find(':', bracket == std::string::npos ? 0 : bracket);
    if (colon != std::string::npos) {
        address.port = rest.substr(colon + 1);
        rest.resize(colon);
    }
    address.host = bracket == std::string::npos ? rest : rest.substr(1, bracket - 1);
    if (address.host.empty()) {
        fail("the host is missing");
    }
    const bool isNumber = !address.port.empty() && address.port.size() <= 5 &&
                          address.port.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber || std::stoul(address.port) == 0 || std::stoul(address.port) > 65535) {
        fail("the port must be a number from 1 to 65535");
    }
    return address;
}

std::optional<Place> placeWithoutLookup(const MasterAddress &address)
{
    Place place{};
    if (address.isLocal()) {
        sockaddr_un socket{};
        socket.sun_family = AF_UNIX;
        address.path.copy(socket.sun_path, longestPath);
        std::memcpy(&place.address, &socket, sizeof socket);
        place.size = sizeof socket;
        return place;
    }
    addrinfo hints{};
    hints.ai_family = address.family;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV | AI_NUMERICHOST;
    addrinfo *found = nullptr;
    if (getaddrinfo(address.host.c_str(), address.port.c_str(), &hints, &found) != 0) {
        return std::nullopt;
    }
    std::memcpy(&place.address, found->ai_addr, found->ai_addrlen);
    place.size = found->ai_addrlen;
    freeaddrinfo(found);
    return place;
}

} // namespace ipmib::agent::agentx
