// SPDX-License-Identifier: BSD-3-Clause
// What the prefix services cost on the Linux platform, without the SNMP library: the call for the next prefix, and a
// row of ipAddressTable with and without the pointer to its prefix, for which the module walks all prefixes.
//
//   bench_prefixes PREFIXES      in a network namespace of its own, which ends with the process; needs root
#include "addr/ip_address_prefix.h"
#include "addr/prefix_pointer.h"
#include "host/registry.h"
#include "host/resolver.h"
#include "linux_platform.h"

#include <ipmib/platform.h>

#include <sched.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <vector>

namespace
{

using namespace ipmib;
using Identifier = std::vector<host::SubId>;

constexpr unsigned interfaces = 16;

// Each prefix has one address.
bool makePrefixes(unsigned count)
{
    std::FILE *ip = popen("ip -batch -", "w");
    if (ip == nullptr) {
        return false;
    }
    for (unsigned i = 0; i < interfaces; ++i) {
        std::fprintf(ip, "link add br%u type bridge\nlink set br%u up\n", i, i);
    }
    for (unsigned i = 0; i < count; ++i) {
        std::fprintf(ip, "addr add 2001:db8:%x:%x::1/64 dev br%u nodad\n", i / 256, i % 256, i % interfaces);
    }
    return pclose(ip) == 0;
}

std::vector<FullPrefixRecord> allPrefixes(const platform::LinuxPlatform &platform)
{
    std::vector<FullPrefixRecord> all;
    for (const platform::Link *link = platform.links().after(0); link != nullptr;
         link = platform.links().after(link->ifIndex)) {
        FullPrefixRecord record{};
        for (uint32_t result = IP6CFG_GetFirstFullPrefix(link->ifIndex, -1, &record); result == 0;
             result = IP6CFG_GetNextFullPrefix(link->ifIndex, -1, &record)) {
            all.push_back(record);
        }
    }
    return all;
}

// Of processor time: others may be busy.
double microsecondsNow()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

} // namespace

// Its name is what callgrind counts by.
[[gnu::noinline]] static std::size_t measuredRows(platform::LinuxPlatform &platform, host::Resolver &resolver,
                                                  Identifier column)
{
    const std::size_t length = column.size();
    Identifier asked = column;
    for (std::size_t rows = 0;; ++rows) {
        platform.beginPacket();
        host::Variable variable;
        variable.asked = asked;
        resolver.getNext({&variable, 1}, std::span(column).first(length - 1));
        if (variable.status != host::Status::ok || variable.name.view()[length - 1] != column.back()) {
            return rows;
        }
        asked.assign(variable.name.view().begin(), variable.name.view().end());
    }
}

namespace
{

void printNext(const char *order, const std::vector<FullPrefixRecord> &keys)
{
    constexpr std::size_t calls = 200'000;
    const std::size_t rounds = calls / keys.size() + 1;
    const double start = microsecondsNow();
    for (std::size_t round = 0; round < rounds; ++round) {
        for (const FullPrefixRecord &key : keys) {
            FullPrefixRecord cursor = key;
            IP6CFG_GetNextFullPrefix(ipmib_be32_get(key.if_index), -1, &cursor);
        }
    }
    const double microseconds = microsecondsNow() - start;
    std::printf("next prefix, %-20s %9.3f us a call\n", order,
                microseconds / static_cast<double>(keys.size() * rounds));
}

void printRows(const char *what, platform::LinuxPlatform &platform, host::Resolver &resolver, host::SubId column)
{
    const double start = microsecondsNow();
    const std::size_t rows = measuredRows(platform, resolver, {1, 3, 6, 1, 2, 1, 4, 34, 1, column});
    std::printf("address row, %-20s %9.3f us a row, %zu rows\n", what,
                (microsecondsNow() - start) / static_cast<double>(std::max<std::size_t>(rows, 1)), rows);
}

// What one row further costs the walk that looks for an address's prefix: it looks for one that is not there.
void printStep()
{
    FullAddressRecord stranger{};
    stranger.prefix_length = 128;
    std::fill(std::begin(stranger.address), std::end(stranger.address), std::uint8_t{0xFD});
    std::size_t rows = 0;
    AddressPrefixRow row{};
    for (std::uint32_t result = ip_AddressPrefix_GetFirst(&row); result == 0; ++rows) {
        const AddressPrefixRow key = row;
        row = {};
        result = ip_AddressPrefix_GetNext(key.if_index, key.address_type, key.address, key.prefix_length, &row);
    }
    constexpr int walks = 100;
    PrefixPointer pointer;
    const double start = microsecondsNow();
    for (int i = 0; i < walks; ++i) {
        ip_Address_PrefixPointer(stranger, &pointer);
    }
    std::printf("step towards a prefix            %9.3f us a row, of %zu\n",
                (microsecondsNow() - start) / walks / static_cast<double>(rows), rows);
}

} // namespace

int main(int argc, char **argv)
{
    const unsigned prefixes = argc > 1 ? static_cast<unsigned>(std::atoi(argv[1])) : 1000;
    if (prefixes < 1 || prefixes > 60'000 || unshare(CLONE_NEWNET) != 0 || !makePrefixes(prefixes)) {
        std::fprintf(stderr, "bench_prefixes: cannot make a network namespace with %u prefixes\n", prefixes);
        return EXIT_FAILURE;
    }
    platform::LinuxPlatform platform;
    if (const std::string error = platform.start(platform::Settings{}); !error.empty()) {
        std::fprintf(stderr, "bench_prefixes: %s\n", error.c_str());
        return EXIT_FAILURE;
    }
    platform::setRunning(&platform);
    host::Registry &registry = host::Registry::ofProcess();
    host::Resolver resolver(*registry.trees().front().root, registry.callbacks().front().callback, nullptr);

    std::vector<FullPrefixRecord> keys = allPrefixes(platform);
    std::printf("%zu prefixes on %u interfaces\n", keys.size(), interfaces);
    printNext("in a walk", keys);
    std::shuffle(keys.begin(), keys.end(), std::mt19937(1));
    printNext("from anywhere", keys);
    constexpr host::SubId prefixColumn = 5; // every row is made with its pointer, whichever column is asked for
    printRows("with its pointer", platform, resolver, prefixColumn);
    printStep();
    platform::setRunning(nullptr);
    return EXIT_SUCCESS;
}
