// SPDX-License-Identifier: BSD-3-Clause
// What rows of ipIfStatsTable cost on the Linux platform, without the SNMP library: module requests, kernel readings
// and time, for all columns side by side and for one column after the other; and what a packet costs before it asks.
//
//   bench_live_rows [INTERFACES]      in a network namespace of its own, which ends with the process; needs root
#include "host/registry.h"
#include "host/resolver.h"
#include "linux_platform.h"

#include <sched.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{

using namespace ipmib;
using Clock = std::chrono::steady_clock;
using Identifier = std::vector<host::SubId>;

const Identifier ipIfStatsEntry{1, 3, 6, 1, 2, 1, 4, 31, 3, 1};
constexpr host::SubId columns[] = {3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 14, 15, 16, 17, 18,
                                   20, 21, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 38};

bool makeInterfaces(unsigned count)
{
    std::FILE *ip = popen("ip -batch -", "w");
    if (ip == nullptr) {
        return false;
    }
    for (unsigned i = 1; i < count; ++i) {
        std::fprintf(ip, "link add br%u type bridge\nlink set br%u up\n", i, i);
    }
    return pclose(ip) == 0;
}

Identifier columnOf(host::SubId column)
{
    Identifier name = ipIfStatsEntry;
    name.push_back(column);
    return name;
}

struct Cost {
    std::uint64_t rows = 0;
    std::uint64_t packets = 0;
    std::uint64_t requests = 0;
    std::uint64_t readings = 0;
    double microseconds = 0;
};

// Asks on from these columns, all of them in each packet, until the first leaves its column.
Cost walk(platform::LinuxPlatform &platform, host::Resolver &resolver, std::vector<Identifier> asked)
{
    const host::SubId column = asked.front().back();
    const std::uint64_t requests = resolver.requestCount();
    const std::uint64_t readings = platform.ip6Links().kernelReads();
    const auto start = Clock::now();
    Cost cost;
    std::vector<host::Variable> variables(asked.size());
    for (;; ++cost.rows) {
        ++cost.packets;
        platform.beginPacket();
        for (std::size_t i = 0; i < asked.size(); ++i) {
            variables[i].asked = asked[i];
        }
        resolver.getNext(variables, ipIfStatsEntry);
        if (variables.front().status != host::Status::ok ||
            variables.front().name.view()[ipIfStatsEntry.size()] != column) {
            break;
        }
        for (std::size_t i = 0; i < asked.size(); ++i) {
            asked[i].assign(variables[i].name.view().begin(), variables[i].name.view().end());
        }
    }
    cost.microseconds = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    cost.requests = resolver.requestCount() - requests;
    cost.readings = platform.ip6Links().kernelReads() - readings;
    return cost;
}

void print(const char *what, const Cost &cost)
{
    std::printf("%-28s %6llu %8llu %9llu %9llu %10.2f\n", what, static_cast<unsigned long long>(cost.rows),
                static_cast<unsigned long long>(cost.packets), static_cast<unsigned long long>(cost.requests),
                static_cast<unsigned long long>(cost.readings),
                cost.microseconds / static_cast<double>(cost.rows == 0 ? 1 : cost.rows));
}

} // namespace

int main(int argc, char **argv)
{
    const unsigned interfaces = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 64;
    if (interfaces < 1 || interfaces > 4096 || unshare(CLONE_NEWNET) != 0 || !makeInterfaces(interfaces)) {
        std::fprintf(stderr, "bench_live_rows: cannot make a network namespace with %u interfaces\n", interfaces);
        return EXIT_FAILURE;
    }
    platform::LinuxPlatform platform;
    if (const std::string error = platform.start(platform::Settings{}); !error.empty()) {
        std::fprintf(stderr, "bench_live_rows: %s\n", error.c_str());
        return EXIT_FAILURE;
    }
    platform::setRunning(&platform);
    host::Registry &registry = host::Registry::ofProcess();
    host::Resolver resolver(*registry.trees().front().root, registry.callbacks().front().callback, nullptr);

    std::vector<Identifier> all;
    for (const host::SubId column : columns) {
        all.push_back(columnOf(column));
    }
    walk(platform, resolver, all); // settles the kernel's order of counters
    std::printf("ipIfStatsTable, %u interfaces    rows  packets  requests  readings     us/row\n", interfaces);
    print("30 columns side by side", walk(platform, resolver, all));
    print("one column", walk(platform, resolver, {columnOf(6)}));

    constexpr int packets = 100'000;
    const auto start = Clock::now();
    for (int i = 0; i < packets; ++i) {
        platform.beginPacket();
    }
    std::printf("a packet's beginning with nothing announced: %.2f us\n",
                std::chrono::duration<double, std::micro>(Clock::now() - start).count() / packets);
    platform::setRunning(nullptr);
    return EXIT_SUCCESS;
}
