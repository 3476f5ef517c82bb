// SPDX-License-Identifier: BSD-3-Clause
// Three network namespaces in a row, a client, a router, in which the calling thread stays, and a server.
#pragma once

#include "netns/namespace.h"

#include <netinet/in.h>

#include <cstdint>

namespace ipmib::netns
{

// A UDP socket in a namespace, bound to the port that addressOf() names.
class UdpSocket
{
  public:
    explicit UdpSocket(const Namespace &space);
    ~UdpSocket();
    UdpSocket(const UdpSocket &) = delete;
    UdpSocket &operator=(const UdpSocket &) = delete;

    template <class Value>
    void set(int level, int option, const Value &value) const
    {
        set(level, option, &value, sizeof value);
    }

    // Sends datagrams of so many octets, IP header included.
    void send(const char *to, unsigned count, unsigned octets) const;
    // The same into a packet filter that drops them, which a sender on the same host is told.
    void sendIntoTheVoid(const char *to, unsigned count, unsigned octets) const;
    // Sends in small bursts and takes each from the receiver before the next.
    void send(const char *to, const UdpSocket &receiver, unsigned count, unsigned octets) const;

  private:
    void set(int level, int option, const void *value, socklen_t size) const;

    int fd_ = -1;
};

class RouterBed
{
  public:
    // The router's interfaces are "lan", towards the client, and "wan", towards the server.
    static constexpr char lanAddress[] = "10.9.1.1";
    static constexpr char wanAddress[] = "10.9.2.1";
    static constexpr char serverAddress[] = "10.9.2.2";

    RouterBed();

    const Namespace clientSpace;
    const Namespace routerSpace;
    const Namespace serverSpace;
    const UdpSocket client{clientSpace};
    const UdpSocket router{routerSpace};
    const UdpSocket server{serverSpace};

  private:
    const Inside inside_{routerSpace};
};

// Of the router's interface.
std::uint32_t ifIndex(const char *name);

sockaddr_in addressOf(const char *host);

} // namespace ipmib::netns
