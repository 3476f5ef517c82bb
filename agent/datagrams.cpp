// SPDX-License-Identifier: BSD-3-Clause
// Stands between the library's transports and its sessions, which take one datagram a turn of the event loop.

#include "datagrams.h"

#include "answer_faults.h"

#include <net-snmp/library/snmpUDPDomain.h>
#include <net-snmp/library/snmpUDPIPv6Domain.h>

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace ipmib::agent
{

namespace
{

// So many are answered before others have their turn: streams, the platform, signals.
constexpr std::size_t mostAtOnce = 16;

constexpr std::size_t largestDatagram = 65536;

bool isReadable(int socket)
{
    return recv(socket, nullptr, 0, MSG_PEEK | MSG_DONTWAIT | MSG_TRUNC) >= 0;
}

} // namespace

Datagrams &Datagrams::all()
{
    static Datagrams datagrams;
    return datagrams;
}

void Datagrams::takeCharge(netsnmp_transport &transport)
{
    if (transport.f_send != send) {
        sendOfLibrary_[transport.domain] = transport.f_send;
        transport.f_send = send;
    }
    // With others, such as DTLS, a datagram is not always a message.
    const bool isPlain = transport.domain == netsnmpUDPDomain || transport.domain == netsnmp_UDPIPv6Domain;
    if (isPlain && transport.f_recv != receive) {
        receiveOfLibrary_[transport.domain] = transport.f_recv;
        transport.f_recv = receive;
    }
}

int Datagrams::receive(netsnmp_transport *transport, void *buffer, int size, void **opaque, int *length)
{
    Datagrams &self = all();
    std::deque<Datagram> &waiting = self.waiting_[transport->sock];
    if (waiting.empty()) {
        self.atHand_ = 0;
        const int received = self.receiveOfLibrary_.at(transport->domain)(transport, buffer, size, opaque, length);
        if (received > 0) {
            self.takeOut(*transport, waiting);
        }
        return received;
    }
    const Datagram first = std::move(waiting.front());
    waiting.pop_front();
    self.atHand_ = first.takenOut;
    *opaque = first.opaque;
    *length = first.opaqueLength;
    const auto count = std::min(first.bytes.size(), static_cast<std::size_t>(size));
    std::copy_n(first.bytes.begin(), count, static_cast<std::uint8_t *>(buffer));
    return static_cast<int>(count);
}

void Datagrams::takeOut(netsnmp_transport &transport, std::deque<Datagram> &waiting)
{
    static std::uint8_t buffer[largestDatagram];
    ++takenOut_;
    while (waiting.size() + 1 < mostAtOnce && isReadable(transport.sock)) {
        Datagram next;
        const int received =
            receiveOfLibrary_.at(transport.domain)(&transport, buffer, sizeof buffer, &next.opaque, &next.opaqueLength);
        if (received <= 0) {
            std::free(next.opaque);
            return;
        }
        next.bytes.assign(buffer, buffer + received);
        next.takenOut = takenOut_;
        waiting.push_back(std::move(next));
    }
}

bool Datagrams::leaveWaiting(netsnmp_large_fd_set &readable)
{
    atHand_ = 0;
    NETSNMP_LARGE_FD_ZERO(&readable);
    bool hasAny = false;
    for (const auto &[socket, waiting] : waiting_) {
        if (!waiting.empty()) {
            NETSNMP_LARGE_FD_SET(socket, &readable);
            hasAny = true;
        }
    }
    return hasAny;
}

bool Datagrams::packetBegins()
{
    if (atHand_ != 0 && begun_ >= atHand_) {
        return false;
    }
    begun_ = takenOut_;
    return true;
}

int Datagrams::send(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length)
{
    if (AnswerFaults *const faults = AnswerFaults::inForce()) {
        const bool isPlain = all().receiveOfLibrary_.contains(transport->domain);
        faults->send(*transport, {buffer, size, opaque, length}, sendNow,
                     isPlain ? AnswerFaults::Patience::asLongAsItTakes : AnswerFaults::Patience::none);
        return size;
    }
    return sendNow(transport, buffer, size, opaque, length);
}

// The library would write a line for each variable of an answer that was not sent.
int Datagrams::sendNow(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length)
{
    if (all().sendOfLibrary_.at(transport->domain)(transport, buffer, size, opaque, length) < 0) {
        snmp_log(LOG_NOTICE, "an answer cannot be sent: %s\n", std::generic_category().message(errno).c_str());
    }
    return size;
}

} // namespace ipmib::agent
