// SPDX-License-Identifier: BSD-3-Clause
// What the tests of IPv4 accounting share: a router to run it on, and what it must have counted.
#pragma once

#include "accounting/ipv4_accounting.h"

#include "core/log.h"
#include "netns/router_bed.h"

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace ipmib::platform
{

using netns::ifIndex;
using netns::RouterBed;
using netns::UdpSocket;

constexpr unsigned octets = 528; // of every datagram here, IP header included

// Datagrams of one interface, all of the same size.
struct Datagrams {
    std::uint64_t received = 0;
    std::uint64_t receivedMulticast = 0;
    std::uint64_t requested = 0;
    std::uint64_t forwarded = 0;
    std::uint64_t sent = 0;
    std::uint64_t sentMulticast = 0;
};

// What nobody has received may still be on its way.
inline void expectCounters(Ipv4Accounting &accounting, const char *interface, const Datagrams &expected)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    const auto countersOfNow = [&] { return accounting.countersOf(netns::ifIndex(interface)); };
    IpMibIfStat found = countersOfNow();
    const auto isBehind = [&] {
        return found.in_receives < expected.received || found.out_requests < expected.requested ||
               found.out_forwarded < expected.forwarded || found.out_transmits < expected.sent;
    };
    while (isBehind() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        found = countersOfNow();
    }
    EXPECT_EQ(found.in_receives, expected.received) << interface;
    EXPECT_EQ(found.in_octets, expected.received * octets) << interface;
    EXPECT_EQ(found.in_mcast_pkts, expected.receivedMulticast) << interface;
    EXPECT_EQ(found.out_requests, expected.requested) << interface;
    EXPECT_EQ(found.out_forwarded, expected.forwarded) << interface;
    EXPECT_EQ(found.out_transmits, expected.sent) << interface;
    EXPECT_EQ(found.out_octets, expected.sent * octets) << interface;
    EXPECT_EQ(found.out_mcast_pkts, expected.sentMulticast) << interface;
    EXPECT_EQ(found.in_discards, 0U) << interface;
    EXPECT_EQ(found.out_discards, 0U) << interface;
}

class AccountingTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        IPMIB_NEEDS_NAMESPACES();
        bed.emplace();
        if (std::system("nft list ruleset >/dev/null 2>&1") != 0) {
            GTEST_SKIP() << "needs nft, and nf_tables in the kernel";
        }
        logged.clear();
        setLogSink([](int, const char *line) { logged.emplace_back(line); });
    }
    void TearDown() override { setLogSink(nullptr); }

    inline static std::vector<std::string> logged;
    std::optional<RouterBed> bed;
};

} // namespace ipmib::platform
