// SPDX-License-Identifier: BSD-3-Clause
// Three network namespaces in a row, a client, a router, in which the calling thread stays, and a server.
#include "netns/router_bed.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace ipmib::netns
{

namespace
{

constexpr in_port_t port = 4739;
constexpr unsigned headers = 20 + 8; // octets of IP and UDP
constexpr unsigned burst = 20;       // far below what a device's queue holds

ssize_t sendOne(int fd, const char *to, unsigned octets)
{
    const std::vector<char> payload(octets - headers);
    const sockaddr_in address = addressOf(to);
    return sendto(fd, payload.data(), payload.size(), 0, reinterpret_cast<const sockaddr *>(&address), sizeof address);
}

} // namespace

RouterBed::RouterBed()
{
    Namespace::connect(routerSpace, "lan", clientSpace, "eth0");
    Namespace::connect(routerSpace, "wan", serverSpace, "eth0");
    routerSpace.run(std::string("ip address add dev lan ") + lanAddress + "/24");
    routerSpace.run(std::string("ip address add dev wan ") + wanAddress + "/24");
    routerSpace.sysctl("net/ipv4/ip_forward", "1");
    routerSpace.sysctl("net/ipv4/igmp_link_local_mcast_reports", "0"); // it sends nothing of its own accord
    clientSpace.run("ip address add dev eth0 10.9.1.2/24");
    clientSpace.run(std::string("ip route add default via ") + lanAddress);
    serverSpace.run(std::string("ip address add dev eth0 ") + serverAddress + "/24");
    serverSpace.run(std::string("ip route add default via ") + wanAddress);
}

std::uint32_t ifIndex(const char *name)
{
    return if_nametoindex(name);
}

sockaddr_in addressOf(const char *host)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    EXPECT_EQ(inet_pton(AF_INET, host, &address.sin_addr), 1);
    return address;
}

UdpSocket::UdpSocket(const Namespace &space)
{
    const Inside inside(space);
    fd_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in any = addressOf("0.0.0.0");
    EXPECT_EQ(bind(fd_, reinterpret_cast<const sockaddr *>(&any), sizeof any), 0);
    set(SOL_SOCKET, SO_RCVTIMEO, timeval{2, 0});
}

UdpSocket::~UdpSocket()
{
    close(fd_);
}

void UdpSocket::set(int level, int option, const void *value, socklen_t size) const
{
    ASSERT_EQ(setsockopt(fd_, level, option, value, size), 0);
}

void UdpSocket::send(const char *to, unsigned count, unsigned octets) const
{
    for (unsigned i = 0; i < count; ++i) {
        ASSERT_EQ(sendOne(fd_, to, octets), static_cast<ssize_t>(octets - headers));
    }
}

void UdpSocket::sendIntoTheVoid(const char *to, unsigned count, unsigned octets) const
{
    for (unsigned i = 0; i < count; ++i) {
        sendOne(fd_, to, octets);
    }
}

void UdpSocket::send(const char *to, const UdpSocket &receiver, unsigned count, unsigned octets) const
{
    std::vector<char> buffer(octets);
    for (unsigned left = count; left > 0;) {
        const unsigned now = std::min(left, burst);
        send(to, now, octets);
        for (unsigned i = 0; i < now; ++i) {
            ASSERT_EQ(recv(receiver.fd_, buffer.data(), buffer.size(), 0), static_cast<ssize_t>(octets - headers));
        }
        left -= now;
    }
}

} // namespace ipmib::netns
