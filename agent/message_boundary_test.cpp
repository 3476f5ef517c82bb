// SPDX-License-Identifier: BSD-3-Clause
// However a stream is cut into pieces, messages end where they end.

#include "message_boundary.h"

#include <gtest/gtest.h>

#include <vector>

namespace ipmib::agent
{

namespace
{

using Octets = std::vector<std::uint8_t>;

constexpr std::size_t longest = 65507;

Octets message(std::size_t content, std::size_t octetsOfLength)
{
    Octets octets = {0x30};
    if (octetsOfLength == 0) {
        octets.push_back(static_cast<std::uint8_t>(content));
    } else {
        octets.push_back(static_cast<std::uint8_t>(0x80 | octetsOfLength));
        for (std::size_t i = octetsOfLength; i-- > 0;) {
            octets.push_back(static_cast<std::uint8_t>(content >> (8 * i)));
        }
    }
    octets.insert(octets.end(), content, 0x30); // what a next message begins with, too
    return octets;
}

// The places at which messages end when the stream comes in pieces of this size.
std::vector<std::size_t> ends(const Octets &stream, std::size_t piece)
{
    MessageBoundary boundary;
    std::vector<std::size_t> found;
    for (std::size_t at = 0; at < stream.size();) {
        const auto arrived = std::span(stream).subspan(at, std::min(piece, stream.size() - at));
        const auto seen = arrived.first(std::min(arrived.size(), MessageBoundary::headerSize));
        const auto taken = arrived.first(std::min(arrived.size(), boundary.mayTake(seen, longest)));
        if (taken.empty()) {
            ADD_FAILURE() << "broken at " << at;
            return found;
        }
        at += taken.size();
        if (boundary.take(taken)) {
            found.push_back(at);
        }
    }
    return found;
}

TEST(MessageBoundary, InPiecesOfAnySize)
{
    Octets stream;
    std::vector<std::size_t> expected;
    for (const auto &[content, octets] : {std::pair<std::size_t, std::size_t>{0, 0},
                                          {1, 0},
                                          {3, 0},
                                          {127, 0},
                                          {0, 1},
                                          {5, 2},
                                          {200, 1},
                                          {300, 2},
                                          {40, 3},
                                          {700, 4},
                                          {65501, 4}}) {
        const Octets one = message(content, octets);
        stream.insert(stream.end(), one.begin(), one.end());
        expected.push_back(stream.size());
    }
    for (const std::size_t piece : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 100u, 65536u}) {
        EXPECT_EQ(ends(stream, piece), expected) << piece;
    }
}

TEST(MessageBoundary, WhatIsNoMessage)
{
    for (const Octets &octets : {Octets{0x31}, Octets{0x00, 0x00}, Octets{'G', 'E', 'T', ' ', '/', ' '},
                                 Octets{0x30, 0x80}, Octets{0x30, 0x85, 0, 0, 0, 0}}) {
        EXPECT_EQ(MessageBoundary().mayTake(octets, longest), 0u);
    }
}

TEST(MessageBoundary, WhatIsTooLong)
{
    EXPECT_EQ(MessageBoundary().mayTake(Octets{0x30, 0x83, 0x00, 0xFF, 0xDE}, longest), longest);
    EXPECT_EQ(MessageBoundary().mayTake(Octets{0x30, 0x83, 0x00, 0xFF, 0xDF}, longest), 0u);
    EXPECT_EQ(MessageBoundary().mayTake(Octets{0x30, 0x84, 0xFF, 0xFF, 0xFF, 0xFF}, longest), 0u);
}

} // namespace

} // namespace ipmib::agent
