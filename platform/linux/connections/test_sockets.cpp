// SPDX-License-Identifier: BSD-3-Clause
// For tests: sockets in the namespace that the thread is in.
#include "connections/test_sockets.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/tcp.h>

#include <cstdlib>
#include <cstring>

namespace ipmib::platform::testing
{

Place::Place(const std::string &address, std::uint16_t port)
{
    if (address.find(':') == std::string::npos) {
        auto &in = reinterpret_cast<sockaddr_in &>(storage);
        in.sin_family = AF_INET;
        in.sin_port = htons(port);
        EXPECT_EQ(inet_pton(AF_INET, address.c_str(), &in.sin_addr), 1) << address;
        size = sizeof in;
        return;
    }
    auto &in = reinterpret_cast<sockaddr_in6 &>(storage);
    const std::size_t percent = address.find('%');
    in.sin6_family = AF_INET6;
    in.sin6_port = htons(port);
    in.sin6_scope_id = percent == std::string::npos
                           ? 0
                           : static_cast<std::uint32_t>(std::strtoul(address.c_str() + percent + 1, nullptr, 10));
    EXPECT_EQ(inet_pton(AF_INET6, address.substr(0, percent).c_str(), &in.sin6_addr), 1) << address;
    size = sizeof in;
}

Descriptor bound(int type, const Place &place, const std::vector<std::pair<int, int>> &options)
{
    Descriptor made(socket(place.family(), type | SOCK_CLOEXEC, 0));
    const int on = 1;
    for (const auto &[level, option] : options) {
        EXPECT_EQ(setsockopt(made.get(), level, option, &on, sizeof on), 0) << std::strerror(errno);
    }
    EXPECT_EQ(bind(made.get(), place.get(), place.size), 0) << std::strerror(errno);
    return made;
}

Descriptor listening(const Place &place, const std::vector<std::pair<int, int>> &options)
{
    constexpr int backlog = 4'096;
    Descriptor made = bound(SOCK_STREAM, place, options);
    EXPECT_EQ(listen(made.get(), backlog), 0) << std::strerror(errno);
    return made;
}

Descriptor connecting(const Place &place)
{
    Descriptor made(socket(place.family(), SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    EXPECT_TRUE(connect(made.get(), place.get(), place.size) != 0 && errno == EINPROGRESS) << std::strerror(errno);
    return made;
}

std::pair<Descriptor, Descriptor> connection(const Descriptor &listener, const Place &place)
{
    Descriptor made(socket(place.family(), SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(connect(made.get(), place.get(), place.size), 0) << std::strerror(errno);
    Descriptor other(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    EXPECT_TRUE(other) << std::strerror(errno);
    return {std::move(made), std::move(other)};
}

void fill(const Descriptor &socket)
{
    const std::vector<char> much(1 << 20);
    while (send(socket.get(), much.data(), much.size(), MSG_DONTWAIT) > 0) {
    }
}

void sendSyn(const std::string &from, const std::string &to, std::uint16_t port)
{
    struct Segment { // the checksum looks at the addresses, too
        in_addr from;
        in_addr to;
        std::uint16_t protocol;
        std::uint16_t size;
        tcphdr header;
    } segment{};
    ASSERT_EQ(inet_pton(AF_INET, from.c_str(), &segment.from), 1);
    const Place place(to, 0);
    segment.to = reinterpret_cast<const sockaddr_in &>(place.storage).sin_addr;
    segment.protocol = htons(IPPROTO_TCP);
    segment.size = htons(sizeof segment.header);
    segment.header.source = htons(40'000);
    segment.header.dest = htons(port);
    segment.header.syn = 1;
    segment.header.doff = sizeof segment.header / 4;
    segment.header.window = htons(1'000);
    std::uint16_t words[sizeof segment / 2];
    std::memcpy(words, &segment, sizeof segment);
    std::uint32_t sum = 0;
    for (const std::uint16_t word : words) {
        sum += word;
    }
    sum = (sum & 0xFFFF) + (sum >> 16);
    segment.header.check = static_cast<std::uint16_t>(~((sum & 0xFFFF) + (sum >> 16)));

    struct Packet {
        std::uint8_t header[20];
        tcphdr segment;
    } packet{};
    packet.header[0] = 0x45; // the kernel fills in the rest of it
    packet.header[8] = 64;
    packet.header[9] = IPPROTO_TCP;
    std::memcpy(packet.header + 12, &segment.from, sizeof segment.from);
    std::memcpy(packet.header + 16, &segment.to, sizeof segment.to);
    packet.segment = segment.header;
    const Descriptor raw(socket(AF_INET, SOCK_RAW | SOCK_CLOEXEC, IPPROTO_RAW));
    EXPECT_EQ(sendto(raw.get(), &packet, sizeof packet, 0, place.get(), place.size),
              static_cast<ssize_t>(sizeof packet))
        << std::strerror(errno);
}

} // namespace ipmib::platform::testing
