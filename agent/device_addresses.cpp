// SPDX-License-Identifier: BSD-3-Clause
// A packet keeps the mark of its socket among what the library knows of its origin, which goes with it everywhere.

#include "device_addresses.h"

#include "answer_faults.h"

#include "datagrams.h"

#include <net-snmp/library/snmpUDPDomain.h>
#include <net-snmp/library/snmpUDPIPv6Domain.h>

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace ipmib::agent
{
namespace
{

DeviceAddresses *inForce = nullptr; // the library's transports know no owner

// Above all numbers of interfaces.
constexpr std::uint32_t marksBegin = 0x40000000;
constexpr std::uint32_t marksEnd = 0x7fffffff;

// Where a packet's origin, as the library has it, keeps the mark of the socket: in the number of the interface that it
// has come in by, or over IPv6 in the flow label, which the kernel does not tell. Null for other origins.
std::uint32_t *markIn(void *opaque, int length)
{
    static_assert(sizeof(netsnmp_indexed_addr_pair) != sizeof(sockaddr_in6));
    if (opaque != nullptr && length == static_cast<int>(sizeof(netsnmp_indexed_addr_pair))) {
        return reinterpret_cast<std::uint32_t *>(&static_cast<netsnmp_indexed_addr_pair *>(opaque)->if_index);
    }
    if (opaque != nullptr && length == static_cast<int>(sizeof(sockaddr_in6))) {
        return &static_cast<sockaddr_in6 *>(opaque)->sin6_flowinfo;
    }
    return nullptr;
}

[[noreturn]] void refuseAddress(const std::string &address, const std::string &reason)
{
    throw std::runtime_error("cannot listen on " + address + ": " + reason);
}

void allowManyDescriptors()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0 && limit.rlim_cur < limit.rlim_max) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace

DeviceAddresses::DeviceAddresses(std::function<void(netsnmp_transport *)> beginSession)
    : beginSession_(std::move(beginSession)), lastMark_(marksBegin)
{
    inForce = this;
}

DeviceAddresses::~DeviceAddresses()
{
    while (!byContext_.empty()) {
        close(std::string(byContext_.begin()->first));
    }
    inForce = nullptr;
}

void DeviceAddresses::open(const std::string &context, const std::string &address)
{
    const auto known = byContext_.find(context);
    if (known != byContext_.end()) {
        if (sockets_.at(known->second).address == address) {
            return;
        }
        close(context);
    }
    if (sockets_.empty()) {
        allowManyDescriptors();
    }
    errno = 0;
    netsnmp_transport *const own = netsnmp_transport_open_server("snmp", address.c_str());
    if (own == nullptr) {
        refuseAddress(address, errno == 0 ? "not an address" : std::generic_category().message(errno));
    }
    try {
        if (own->domain != netsnmpUDPDomain && own->domain != netsnmp_UDPIPv6Domain) {
            refuseAddress(address, "the address of a device has to be of UDP");
        }
        netsnmp_transport &all = transportFor(*own);
        lastMark_ = lastMark_ == marksEnd ? marksBegin : lastMark_ + 1;
        fcntl(own->sock, F_SETFL, fcntl(own->sock, F_GETFL) | O_NONBLOCK);
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u32 = lastMark_;
        if (epoll_ctl(all.sock, EPOLL_CTL_ADD, own->sock, &event) != 0) {
            refuseAddress(address, std::generic_category().message(errno));
        }
        sockets_[lastMark_] = {context, address, own};
        byContext_[context] = lastMark_;
    } catch (...) {
        netsnmp_transport_free(own);
        throw;
    }
}

void DeviceAddresses::close(const std::string &context)
{
    const auto found = byContext_.find(context);
    if (found != byContext_.end()) {
        netsnmp_transport *const own = sockets_.at(found->second).transport;
        own->f_close(own); // which takes it out of the epoll descriptor
        netsnmp_transport_free(own);
        sockets_.erase(found->second);
        byContext_.erase(found);
    }
}

std::vector<std::uint8_t> DeviceAddresses::addressOf(const std::string &context) const
{
    const auto found = byContext_.find(context);
    netsnmp_sockaddr_storage own{};
    socklen_t size = sizeof own;
    if (found == byContext_.end() || getsockname(sockets_.at(found->second).transport->sock, &own.sa, &size) != 0) {
        return {};
    }
    std::vector<std::uint8_t> address;
    const auto append = [&address](const auto &part) {
        const auto *const octets = reinterpret_cast<const std::uint8_t *>(&part);
        address.insert(address.end(), octets, octets + sizeof part);
    };
    if (own.sa.sa_family == AF_INET) {
        append(own.sin.sin_addr);
        append(own.sin.sin_port);
    } else {
        append(own.sin6.sin6_addr);
        append(own.sin6.sin6_port);
    }
    return address;
}

netsnmp_transport &DeviceAddresses::transportFor(const netsnmp_transport &own)
{
    netsnmp_transport *&all = transports_[own.domain];
    if (all != nullptr) {
        return *all;
    }
    const int ready = epoll_create1(EPOLL_CLOEXEC);
    if (ready < 0) {
        throw std::system_error(errno, std::generic_category(), "epoll_create1");
    }
    auto *const made = static_cast<netsnmp_transport *>(std::calloc(1, sizeof(netsnmp_transport)));
    if (made == nullptr) {
        ::close(ready);
        throw std::bad_alloc();
    }
    made->domain = own.domain;
    made->domain_length = own.domain_length;
    made->sock = ready;
    made->msgMaxSize = own.msgMaxSize;
    made->f_recv = receive;
    made->f_send = send;
    made->f_close = closeAll;
    made->f_fmtaddr = own.f_fmtaddr;
    made->f_get_taddr = own.f_get_taddr;
    beginSession_(made);
    return *(all = made);
}

int DeviceAddresses::closeAll(netsnmp_transport *transport)
{
    const int result = ::close(transport->sock);
    transport->sock = -1;
    return result;
}

int DeviceAddresses::receive(netsnmp_transport *transport, void *buffer, int size, void **opaque, int *length)
{
    epoll_event ready{};
    if (epoll_wait(transport->sock, &ready, 1, 0) != 1) {
        errno = EAGAIN;
        return -1;
    }
    Datagrams::all().hasOneOfNow();
    netsnmp_transport *const own = inForce->sockets_.at(ready.data.u32).transport;
    const int received = own->f_recv(own, buffer, size, opaque, length);
    if (std::uint32_t *const mark = received < 0 ? nullptr : markIn(*opaque, *length)) {
        *mark = ready.data.u32;
    }
    return received;
}

// Null when the socket is no longer there.
const DeviceAddresses::Socket *DeviceAddresses::socketOf(const void *opaque, int length)
{
    const std::uint32_t *const mark = markIn(const_cast<void *>(opaque), length);
    if (inForce == nullptr || mark == nullptr) {
        return nullptr;
    }
    const auto found = inForce->sockets_.find(*mark);
    return found == inForce->sockets_.end() ? nullptr : &found->second;
}

int DeviceAddresses::send(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length)
{
    if (AnswerFaults *const faults = AnswerFaults::inForce()) {
        faults->send(*transport, {buffer, size, opaque, length}, sendNow, AnswerFaults::Patience::asLongAsItTakes);
        return size;
    }
    return sendNow(transport, buffer, size, opaque, length);
}

int DeviceAddresses::sendNow(netsnmp_transport *, const void *buffer, int size, void **opaque, int *length)
{
    const Socket *const socket = socketOf(*opaque, *length);
    if (socket == nullptr) {
        return size; // nobody waits for it there any more
    }
    std::vector<std::uint8_t> copy(static_cast<const std::uint8_t *>(*opaque),
                                   static_cast<const std::uint8_t *>(*opaque) + *length);
    void *own = copy.data();
    *markIn(own, *length) = 0;
    if (socket->transport->f_send(socket->transport, buffer, size, &own, length) < 0) {
        snmp_log(LOG_NOTICE, "an answer cannot be sent: %s\n", std::generic_category().message(errno).c_str());
    }
    return size;
}

const std::string *DeviceAddresses::contextAt(const netsnmp_pdu &packet)
{
    const Socket *const socket = socketOf(packet.transport_data, packet.transport_data_length);
    return socket == nullptr ? nullptr : &socket->context;
}

} // namespace ipmib::agent
