// SPDX-License-Identifier: BSD-3-Clause
// What a full routing table costs on the Linux platform, without the SNMP library: how long the start and the reading
// take, and the longest turn between two packets meanwhile; memory; a walk; a link that has nothing to do with it; and
// how long the rows are behind after a storm of changes.
//
//   bench_live_routes [IPV4 [IPV6 [HOPS [STORM]]]]     routes, different next hops of them, changes of the storm
//
// In a network namespace of its own, which ends with the process; needs root. The socket's buffer is that of a process
// without capabilities.
#include "linux_platform.h"
#include "route_changes.h"

#include <sched.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>
#include <thread>

namespace
{

using namespace ipmib::platform;
using ipmib::bench::RouteChanges;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

std::string statusOf(const char *name)
{
    std::ifstream file("/proc/self/status");
    for (std::string line; std::getline(file, line);) {
        if (line.rfind(name, 0) == 0) {
            return line.substr(line.find_first_not_of(" \t", std::string(name).size() + 1));
        }
    }
    return "?";
}

double processorMs()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

// Dispatches until the condition holds. The longest turn is in processor time: a busy machine takes the rest.
double turns(LinuxPlatform &platform, const std::function<bool()> &done)
{
    double longest = 0;
    while (!done()) {
        const double before = processorMs();
        platform.dispatch();
        longest = std::max(longest, processorMs() - before);
    }
    return longest;
}

std::uint64_t walk(LinuxPlatform &platform)
{
    IpmibRoute row{};
    std::uint64_t rows = 0;
    while (platform.routes().next(row.key, row)) {
        ++rows;
    }
    return rows;
}

} // namespace

int main(int argc, char **argv)
{
    const auto number = [&](int at, unsigned otherwise) {
        return argc > at ? static_cast<unsigned>(std::atoi(argv[at])) : otherwise;
    };
    const unsigned ipv4 = number(1, 1'000'000);
    const unsigned ipv6 = number(2, 230'000);
    const unsigned hops = std::max(1u, number(3, 50'000));
    const unsigned storm = number(4, 200'000);
    // The kernel looks through all next hops on an interface for each route that comes.
    const std::string addInterfaces = "ip link set lo up; for i in $(seq 0 " +
                                      std::to_string(RouteChanges::interfaces - 1) +
                                      "); do h=$(printf %x $i); echo link add b$i type bridge; echo link set b$i up; "
                                      "echo addr add 10.$i.0.1/16 dev b$i;"
                                      "echo addr add fd00:0:0:$h::1/64 dev b$i nodad; done | ip -batch -";
    RouteChanges changes;
    if (unshare(CLONE_NEWNET) != 0 || std::system(addInterfaces.c_str()) != 0 || !changes.open()) {
        std::fprintf(stderr, "bench_live_routes: cannot make a network namespace\n");
        return EXIT_FAILURE;
    }
    changes.ipv4(RTM_NEWROUTE, 0, ipv4, hops);
    changes.ipv6(RTM_NEWROUTE, ipv6, hops);
    LinuxPlatform platform;
    Settings settings;
    settings.receiveBuffer = 212'992 / 2; // the kernel doubles it
    const std::string before = statusOf("VmRSS");
    auto start = Clock::now();
    std::string error = platform.start(settings);
    error = error.empty() ? platform.routes().follow() : error;
    if (!error.empty()) {
        std::fprintf(stderr, "bench_live_routes: %s\n", error.c_str());
        return EXIT_FAILURE;
    }
    std::printf("start, until other tables answer         %9.1f ms\n", millisecondsSince(start));
    double longest = turns(platform, [&] { return platform.routes().areRead() == 1; });
    std::printf("start, until all routes are read         %9.1f ms\n", millisecondsSince(start));
    std::printf("  longest turn between two packets       %9.2f ms\n", longest);
    std::printf("rows of IPv4, of IPv6                    %9llu %llu\n",
                static_cast<unsigned long long>(platform.routes().count(IPMIB_IPV4)),
                static_cast<unsigned long long>(platform.routes().count(IPMIB_IPV6)));
    std::printf("octets a row                             %9.1f\n",
                static_cast<double>(platform.routes().memory()) /
                    static_cast<double>(platform.routes().count(IPMIB_IPV4) + platform.routes().count(IPMIB_IPV6)));
    std::printf("resident before the start, now, at most  %s, %s, %s\n", before.c_str(), statusOf("VmRSS").c_str(),
                statusOf("VmHWM").c_str());

    start = Clock::now();
    const std::uint64_t rows = walk(platform);
    std::printf("a step of a walk                         %9.3f us\n",
                1e3 * millisecondsSince(start) / static_cast<double>(rows));

    const unsigned readings =
        platform.ipv4().routeMirror().timesRead() + platform.addressing().routeMirror().timesRead();
    if (std::system("ip link add x0 type veth peer name x1; ip link set x0 up; ip link set x1 up; ip link set x0 down;"
                    "ip link del x0") != 0) {
        return EXIT_FAILURE;
    }
    const auto flapped = Clock::now();
    longest = turns(platform, [&] { return millisecondsSince(flapped) > 500; });
    std::printf("a link without routes goes up and down: longest turn %.2f ms, routes read again %u times\n", longest,
                platform.ipv4().routeMirror().timesRead() + platform.addressing().routeMirror().timesRead() - readings);

    if (storm > 0) {
        std::atomic<bool> done = false;
        std::thread daemon([&] {
            constexpr unsigned perRound = 10'000;
            const unsigned changed = std::min(perRound, ipv4);
            for (unsigned round = 0; round < storm; round += 2 * changed) {
                changes.ipv4(RTM_DELROUTE, 0, changed, hops);
                changes.ipv4(RTM_NEWROUTE, 0, changed, hops);
            }
            done = true;
        });
        start = Clock::now();
        longest = turns(platform, [&] { return done.load(); });
        daemon.join();
        const double took = millisecondsSince(start);
        const auto ended = Clock::now();
        longest = std::max(longest, turns(platform, [&] {
                               return !platform.ipv4().routeMirror().refreshing() &&
                                      platform.routes().count(IPMIB_IPV4) >= ipv4;
                           }));
        std::printf(
            "%u changes in %.1f s: rows right %.1f s behind the last, longest turn %.2f ms, lost %u times, "
            "read again %u times\n",
            storm, took / 1e3, millisecondsSince(ended) / 1e3, longest, platform.ipv4().routeMirror().timesLost(),
            platform.ipv4().routeMirror().timesRead() + platform.addressing().routeMirror().timesRead() - readings);
    }
    return EXIT_SUCCESS;
}
