// SPDX-License-Identifier: BSD-3-Clause
// Addresses of single devices: what arrives there names no context, and means the device's. There may be thousands; for
// the library, which goes through its sessions again and again, they are one transport, readable when one of them is.
#pragma once

#include "net_snmp.h"

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

namespace ipmib::agent
{

class DeviceAddresses
{
  public:
    // Begins a session with a transport of ours, which may outlive this; throws std::runtime_error.
    explicit DeviceAddresses(std::function<void(netsnmp_transport *)> beginSession);
    ~DeviceAddresses();
    DeviceAddresses(const DeviceAddresses &) = delete;
    DeviceAddresses &operator=(const DeviceAddresses &) = delete;

    // From now on the context is asked at this address as well, written as for snmpd; of UDP alone, one for a context.
    // Throws std::runtime_error that names the address and the reason.
    void open(const std::string &context, const std::string &address);
    void close(const std::string &context);

    // Address and port, in network byte order; empty when it has none.
    std::vector<std::uint8_t> addressOf(const std::string &context) const;

    // The context at whose address the packet has arrived; null for another address.
    static const std::string *contextAt(const netsnmp_pdu &packet);

  private:
    struct Socket {
        std::string context;
        std::string address;
        netsnmp_transport *transport = nullptr;
    };

    // In the place of the library's, with its arguments and results.
    static int receive(netsnmp_transport *transport, void *buffer, int size, void **opaque, int *length);
    static int send(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length);
    static int sendNow(netsnmp_transport *transport, const void *buffer, int size, void **opaque, int *length);
    static int closeAll(netsnmp_transport *transport);

    netsnmp_transport &transportFor(const netsnmp_transport &own);
    static const Socket *socketOf(const void *opaque, int length);

    std::function<void(netsnmp_transport *)> beginSession_;
    std::unordered_map<std::uint32_t, Socket> sockets_; // by marks, none of which is given twice: answers may be late
    std::unordered_map<std::string, std::uint32_t> byContext_;
    std::uint32_t lastMark_;
    std::unordered_map<const oid *, netsnmp_transport *> transports_; // of the sessions, by domain; epoll
};

} // namespace ipmib::agent
