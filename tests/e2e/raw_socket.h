// SPDX-License-Identifier: BSD-3-Clause
// Datagrams on loopback addresses as they come, without a library that drops what it does not wait for.
#pragma once

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace ipmib::e2e
{

class RawSocket
{
  public:
    RawSocket() : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in own = place("127.0.0.1", 0);
        EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr *>(&own), sizeof own), 0);
        constexpr timeval patience{20, 0};
        setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    }
    ~RawSocket() { close(socket_); }
    RawSocket(const RawSocket &) = delete;
    RawSocket &operator=(const RawSocket &) = delete;

    std::uint16_t port() const
    {
        sockaddr_in own{};
        socklen_t size = sizeof own;
        getsockname(socket_, reinterpret_cast<sockaddr *>(&own), &size);
        return ntohs(own.sin_port);
    }
    void sendTo(std::uint16_t port, const std::string &message, const std::string &address = "127.0.0.1") const
    {
        const sockaddr_in to = place(address, port);
        EXPECT_EQ(
            sendto(socket_, message.data(), message.size(), 0, reinterpret_cast<const sockaddr *>(&to), sizeof to),
            static_cast<ssize_t>(message.size()));
    }
    // Empty when none comes.
    std::string next() const
    {
        std::string from;
        return next(from);
    }
    // From where it has come: "127.0.0.1:161".
    std::string next(std::string &from) const
    {
        char buffer[1500];
        sockaddr_in sender{};
        socklen_t length = sizeof sender;
        const ssize_t size =
            recvfrom(socket_, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr *>(&sender), &length);
        char text[INET_ADDRSTRLEN] = "";
        inet_ntop(AF_INET, &sender.sin_addr, text, sizeof text);
        from = size < 0 ? "" : text + (":" + std::to_string(ntohs(sender.sin_port)));
        return std::string(buffer, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    }

    // Whether nothing has come yet.
    bool isEmpty() const
    {
        char first;
        return recv(socket_, &first, sizeof first, MSG_PEEK | MSG_DONTWAIT) < 0;
    }

  private:
    static sockaddr_in place(const std::string &address, std::uint16_t port)
    {
        sockaddr_in place{};
        place.sin_family = AF_INET;
        place.sin_port = htons(port);
        inet_pton(AF_INET, address.c_str(), &place.sin_addr);
        return place;
    }

    int socket_;
};

} // namespace ipmib::e2e
