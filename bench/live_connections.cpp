// SPDX-License-Identifier: BSD-3-Clause
// What reading the connections of this network namespace costs on the Linux platform, without the SNMP library: how
// long it takes, the longest turn between two packets meanwhile and while the rows are dropped, memory, and a walk.
//
//   bench_live_connections
//
// For bench/connections.py, which makes the connections.
#include "linux_platform.h"

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace
{

using namespace ipmib::platform;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t table = IPMIB_TCP_CONNECTIONS;

double processorMs()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) * 1e3 + static_cast<double>(used.tv_nsec) / 1e6;
}

// Of turns until the condition holds, in processor time: a busy machine takes the rest.
struct Turns {
    double longest = 0;
    double sum = 0;
};

Turns turns(LinuxPlatform &platform, const std::function<bool()> &done)
{
    Turns all;
    while (!done()) {
        const double before = processorMs();
        platform.dispatch();
        const double took = processorMs() - before;
        all.longest = std::max(all.longest, took);
        all.sum += took;
    }
    return all;
}

} // namespace

int main()
{
    LinuxPlatform platform;
    if (const std::string error = platform.start(); !error.empty()) {
        std::fprintf(stderr, "bench_live_connections: %s\n", error.c_str());
        return EXIT_FAILURE;
    }
    Connections &connections = platform.connections();
    SocketTimes times;
    times.fresh = times.oldest = std::chrono::hours(1);
    times.idle = std::chrono::milliseconds(1);
    connections.setTimes(times);
    const SocketReading &reading = connections.reading(table);
    double before = processorMs();
    connections.areRead(table);
    const double question = processorMs() - before;
    const Turns read = turns(platform, [&] { return reading.timesRead() == 1; });
    const auto rows = static_cast<double>(connections.table(table).size());
    std::printf("rows                                      %9.0f\n", rows);
    std::printf("processor time of the reading             %9.1f ms\n", question + read.sum);
    std::printf("  the question that begins it             %9.2f ms\n", question);
    std::printf("  longest turn between two packets        %9.2f ms\n", read.longest);
    std::printf("octets a row                              %9.1f\n",
                static_cast<double>(connections.table(table).memory()) / rows);
    before = processorMs();
    for (IpmibConnection row{}; connections.next(table, row.key, row);) {
    }
    std::printf("a step of a walk                          %9.3f us\n", 1e3 * (processorMs() - before) / rows);
    const Turns dropped = turns(platform, [&] { return reading.isIdle(); });
    std::printf("longest turn while the rows are dropped   %9.2f ms\n", dropped.longest);
    return EXIT_SUCCESS;
}
