// SPDX-License-Identifier: BSD-3-Clause
// Stands between the library's transports and its sessions, which wait for clients and have no limits.

#include "stream_clients.h"

#include "answer_faults.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <stdexcept>
#include <string>

namespace ipmib::agent
{

namespace
{

constexpr const char *maxConnectionsDirective = "maxConnections";
constexpr const char *idleTimeDirective = "connectionIdleTime";
constexpr long defaultMaxConnections = 64;
constexpr long defaultIdleTime = 600; // twice the interval at which collectors usually ask
constexpr int backlog = 128;
// Some answers of the longest kind: whoever leaves so much unread is not late but gone, or means harm.
constexpr int sendBufferSize = 256 * 1024;

// The library's convention: nothing was there, and it is not the end.
int nothingReceived(netsnmp_transport &transport)
{
    transport.flags |= NETSNMP_TRANSPORT_FLAG_EMPTY_PKT;
    return 0;
}

bool isMerelyNothing(int error)
{
    return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

std::string peerOf(netsnmp_transport &transport)
{
    char *text = transport.f_fmtaddr(&transport, transport.data, transport.data_length);
    const std::string peer = text == nullptr ? "a client" : text;
    free(text);
    return peer;
}

// Returns false for what is no number, or less than 1.
bool readNumber(const char *line, long &number)
{
    const char *end = line + std::strlen(line);
    long read = 0;
    const auto [rest, error] = std::from_chars(line, end, read);
    if (error != std::errc() || read < 1 || std::strspn(rest, " \t\r\n") != static_cast<std::size_t>(end - rest)) {
        return false;
    }
    number = read;
    return true;
}

int openReserve()
{
    return open("/dev/null", O_RDONLY | O_CLOEXEC);
}

} // namespace

StreamClients &StreamClients::all()
{
    static StreamClients clients;
    return clients;
}

StreamClients::StreamClients() : maxConnections_(defaultMaxConnections), idleTime_(defaultIdleTime) {}

void StreamClients::readSettingsFrom(const char *fileType)
{
    register_config_handler(
        fileType, maxConnectionsDirective,
        [](const char *directive, char *line) {
            if (!readNumber(line, all().maxConnections_)) {
                netsnmp_config_error("%s: needs a number, 1 or more", directive);
            }
        },
        [] { all().maxConnections_ = defaultMaxConnections; }, "NUMBER");
    register_config_handler(
        fileType, idleTimeDirective,
        [](const char *directive, char *line) {
            if (!readNumber(line, all().idleTime_)) {
                netsnmp_config_error("%s: needs a number of seconds, 1 or more", directive);
            }
        },
        [] { all().idleTime_ = defaultIdleTime; }, "SECONDS");
}

void StreamClients::takeCharge(netsnmp_transport &listening, std::size_t longest)
{
    if (listening.f_accept != accept) {
        kinds_[listening.domain] = {listening.f_recv, listening.f_accept, listening.f_close};
    }
    listening.f_accept = accept;
    listening.f_recv = receive;
    listening.f_send = send;
    listening.f_close = close;
    longest_ = longest;
    listen(listening.sock, backlog); // the library has listened with a much shorter one
    if (reserve_ < 0) {
        reserve_ = openReserve();
    }
}

void StreamClients::leaveOne(netsnmp_large_fd_set &readable)
{
    int next = -1;
    const auto isWaiting = [&](const auto &entry) {
        return !entry.second.isLetGo && NETSNMP_LARGE_FD_ISSET(entry.first, &readable);
    };
    for (const auto &entry : clients_) {
        if (isWaiting(entry) && (next < 0 || (next <= lastServed_ && entry.first > lastServed_))) {
            next = entry.first;
        }
    }
    for (const auto &entry : clients_) {
        if (isWaiting(entry) && entry.first != next) {
            NETSNMP_LARGE_FD_CLR(entry.first, &readable);
        }
    }
    lastServed_ = next;
}

int StreamClients::accept(netsnmp_transport *listening)
{
    StreamClients &self = all();
    const int descriptor = self.kinds_.at(listening->domain).accept(listening);
    if (descriptor >= 0) {
        self.takeIn(descriptor);
    } else if (errno == EMFILE || errno == ENFILE) {
        self.turnAway(*listening);
    }
    return descriptor;
}

void StreamClients::takeIn(int descriptor)
{
    // Half of the descriptors are for everything else: files of the kernel and the configuration, and UDP.
    rlimit descriptors{};
    getrlimit(RLIMIT_NOFILE, &descriptors);
    const auto limit = std::clamp<rlim_t>(descriptors.rlim_cur / 2, 1, static_cast<rlim_t>(maxConnections_));
    if (clients_.size() >= limit) {
        letLongestSilentGo();
    }
    fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK);
    fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &sendBufferSize, sizeof sendBufferSize);
    clients_[descriptor] = {{}, Clock::now()};
    if (alarm_ == 0) {
        alarm_ = snmp_alarm_register(
            static_cast<unsigned>(std::max(idleTime_ / 4, 1L)), SA_REPEAT,
            [](unsigned, void *self) { static_cast<StreamClients *>(self)->letIdleOnesGo(); }, this);
    }
}

// What cannot be accepted stays at the door, and the loop would turn for it for ever.
void StreamClients::turnAway(const netsnmp_transport &listening)
{
    snmp_log(LOG_WARNING, "no descriptor is left for a connection, turning it away\n");
    ::close(reserve_);
    const int descriptor = ::accept(listening.sock, nullptr, nullptr);
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    reserve_ = openReserve();
}

// 0 at the end of the connection, or where it ought to end; without a limit when nothing has come in after all.
std::size_t StreamClients::mayTake(const Client &client, const netsnmp_transport &transport) const
{
    if (client.boundary.isInside()) {
        return client.boundary.mayTake({}, longest_);
    }
    std::uint8_t next[MessageBoundary::headerSize];
    const ssize_t seen = recv(transport.sock, next, sizeof next, MSG_PEEK | MSG_DONTWAIT);
    if (seen <= 0) {
        return seen < 0 && isMerelyNothing(errno) ? SIZE_MAX : 0;
    }
    return client.boundary.mayTake({next, static_cast<std::size_t>(seen)}, longest_);
}

int StreamClients::receive(netsnmp_transport *transport, void *buffer, int size, void **opaque, int *length)
{
    StreamClients &self = all();
    const auto found = self.clients_.find(transport->sock);
    if (found == self.clients_.end() || found->second.isLetGo) {
        return -1;
    }
    Client &client = found->second;
    const std::size_t wanted = self.mayTake(client, *transport);
    if (wanted == SIZE_MAX) {
        return nothingReceived(*transport);
    }
    if (wanted == 0) {
        return -1;
    }
    const int received =
        self.kinds_.at(transport->domain)
            .receive(transport, buffer, static_cast<int>(std::min<std::size_t>(wanted, static_cast<std::size_t>(size))),
                     opaque, length);
    if (received < 0 && isMerelyNothing(errno)) {
        SNMP_FREE(*opaque);
        return nothingReceived(*transport);
    }
    if (received > 0 &&
        client.boundary.take({static_cast<const std::uint8_t *>(buffer), static_cast<std::size_t>(received)})) {
        client.lastHeard = Clock::now();
    }
    return received;
}

int StreamClients::send(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length)
{
    if (AnswerFaults *const faults = AnswerFaults::inForce()) {
        faults->send(*transport, {buffer, size, opaque, length}, sendNow, AnswerFaults::Patience::none);
        return size;
    }
    return sendNow(transport, buffer, size, opaque, length);
}

int StreamClients::sendNow(netsnmp_transport *transport, const void *buffer, int size, void **, int *)
{
    StreamClients &self = all();
    const auto found = self.clients_.find(transport->sock);
    if (found != self.clients_.end() && !found->second.isLetGo &&
        ::send(transport->sock, buffer, static_cast<std::size_t>(size), MSG_DONTWAIT | MSG_NOSIGNAL) != size) {
        snmp_log(LOG_NOTICE, "%s does not take its answers, closing the connection\n", peerOf(*transport).c_str());
        letGo(transport->sock, found->second);
    }
    return size; // the library would write a line for each variable of an answer that was not sent
}

int StreamClients::close(netsnmp_transport *transport)
{
    StreamClients &self = all();
    if (self.closed_) {
        self.closed_(*transport);
    }
    self.clients_.erase(transport->sock);
    if (self.clients_.empty() && self.alarm_ != 0) {
        snmp_alarm_unregister(self.alarm_);
        self.alarm_ = 0;
    }
    return self.kinds_.at(transport->domain).close(transport);
}

void StreamClients::letGo(int descriptor, Client &client)
{
    client.isLetGo = true;
    shutdown(descriptor, SHUT_RDWR);
}

void StreamClients::letLongestSilentGo()
{
    const auto silentSince = [](const auto &entry) {
        return entry.second.isLetGo ? Clock::time_point::max() : entry.second.lastHeard;
    };
    const auto found = std::ranges::min_element(clients_, {}, silentSince);
    if (found == clients_.end() || found->second.isLetGo) {
        return;
    }
    snmp_log(LOG_NOTICE, "%zu connections are open, closing the one that has been silent longest for a new one\n",
             clients_.size());
    letGo(found->first, found->second);
}

void StreamClients::letIdleOnesGo()
{
    const Clock::time_point earliest = Clock::now() - std::chrono::seconds(idleTime_);
    for (auto &[descriptor, client] : clients_) {
        if (!client.isLetGo && client.lastHeard <= earliest) {
            letGo(descriptor, client);
        }
    }
}

} // namespace ipmib::agent
