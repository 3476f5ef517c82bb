// SPDX-License-Identifier: BSD-3-Clause
// Changes routes of the network namespace at a steady rate: takes some hundreds away and puts them back, all over the
// table. A tenth of the table is left out in the end.
//
//   bench_route_churn RATE SECONDS ROUTES HOPS      changes a second, routes of IPv4 that there are, their gateways
//
// For bench/full_table.py, which makes the routes. As root.
#include "route_changes.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

int main(int argc, char **argv)
{
    using Clock = std::chrono::steady_clock;
    ipmib::bench::RouteChanges changes;
    if (argc != 5 || !changes.open()) {
        std::fprintf(stderr, "usage: bench_route_churn RATE SECONDS ROUTES HOPS\n");
        return EXIT_FAILURE;
    }
    const auto rate = static_cast<unsigned>(std::atoi(argv[1]));
    const auto total = rate * static_cast<unsigned>(std::atoi(argv[2]));
    const auto routes = static_cast<unsigned>(std::atoi(argv[3]));
    const auto hops = static_cast<unsigned>(std::atoi(argv[4]));
    constexpr unsigned together = 500;
    const unsigned leavesOut = routes / 10; // from the last one on
    const auto begin = Clock::now();
    unsigned sent = 0;
    unsigned at = 0;
    const auto pace = [&](unsigned number) {
        sent += number;
        std::this_thread::sleep_until(begin + std::chrono::nanoseconds(std::uint64_t{sent} * 1'000'000'000 / rate));
    };
    while (sent + leavesOut < total) {
        const unsigned number = std::min(together, routes - at);
        changes.ipv4(RTM_DELROUTE, at, number, hops);
        pace(number);
        changes.ipv4(RTM_NEWROUTE, at, number, hops);
        pace(number);
        at = at + number >= routes ? 0 : at + number;
    }
    for (at = routes - leavesOut; at < routes;) {
        const unsigned number = std::min(together, routes - at);
        changes.ipv4(RTM_DELROUTE, at, number, hops);
        pace(number);
        at += number;
    }
    std::printf("%u changes in %.1f s\n", sent, std::chrono::duration<double>(Clock::now() - begin).count());
}
