// SPDX-License-Identifier: BSD-3-Clause
// Reads the command line with getopt_long.
#include "options.h"

#include <charconv>
#include <sstream>
#include <string_view>

namespace ipmib::cli
{

const char *const helpText = R"(Usage: ipmibctl [OPTION]... COMMAND

Shows the IP-MIB of this machine, or of a simulated device, without SNMP.

  show VIEW [INTERFACE]  a table, of all interfaces or of one; VIEW is neighbours, addresses, prefixes, routers,
                         interfaces, statistics, icmp or advertisements, or the beginning of such a word
  show routes [PREFIX]   all routes, or those within a prefix
  show route ADDRESS     the routes with the longest prefix that an address lies in
  show statistics NAME   all counters of an interface, or of the "system"
  watch statistics [NAME], watch interfaces, watch icmp
                         how much the counters grow a second, again and again
  get OBJECT...          values; an OBJECT is written 1.3.6.1.2.1.4.26.0, ipv6IpDefaultHopLimit,
                         ipIfStatsHCInOctets.2.3 or ipIfStatsHCInOctets[ipv6][eth0]
  walk OBJECT            all values below an object
  tree [OBJECT]          the objects, with their types, access, and whether they are served

  -4, -6                 show and watch one version of IP alone
      --json             for programs
      --width N          as wide as N places (default: the terminal; 0: no limit)
      --interval S       seconds between two looks of watch (default: 1)
      --count N          how often watch looks (default: until it is interrupted)
      --platform NAME[:ARGUMENT]
                         where the facts come from (default: linux; simulated:FILE is a device from a scenario)
      --module PATH      the module to load (default: the one that ipmibctl came with)
      --OPTION[=VALUE]   any other long option is handed to the platform
  -h, --help             print this and exit
  -v, --version          print the version and exit
)";

namespace
{

enum { jsonOption = host::firstProgramOption, widthOption, intervalOption, countOption };

constexpr option longOptions[] = {
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},
    {"json", no_argument, nullptr, jsonOption},
    {"width", required_argument, nullptr, widthOption},
    {"interval", required_argument, nullptr, intervalOption},
    {"count", required_argument, nullptr, countOption},
    host::pluginOptions[0],
    host::pluginOptions[1],
    {nullptr, 0, nullptr, 0},
};

template <class Number>
std::string shown(Number number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

template <class Number>
Number parseNumber(const char *option, std::string_view text, Number low, Number high)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || !(number >= low && number <= high)) {
        throw host::UsageError(std::string(option) + ": \"" + std::string(text) + "\" is not a number from " +
                               shown(low) + " to " + shown(high));
    }
    return number;
}

} // namespace

Options parseOptions(int argc, char *const *argv)
{
    constexpr unsigned most = 1'000'000;
    constexpr double perSecond = 1'000;
    Options options;
    opterr = 0;
    optind = 0; // lets glibc start afresh
    int letter;
    while ((letter = getopt_long(argc, argv, ":hv46", longOptions, nullptr)) != -1) {
        switch (letter) {
        case 'h':
            options.action = Options::Action::help;
            return options;
        case 'v':
            options.action = Options::Action::version;
            return options;
        case '4':
            options.version = Version::ipv4;
            break;
        case '6':
            options.version = Version::ipv6;
            break;
        case jsonOption:
            options.json = true;
            break;
        case widthOption:
            options.width = parseNumber("--width", optarg, 0u, most);
            break;
        case intervalOption:
            options.intervalMs = static_cast<unsigned>(parseNumber("--interval", optarg, 0.01, 86'400.0) * perSecond);
            break;
        case countOption:
            options.count = parseNumber("--count", optarg, 1u, most);
            break;
        default:
            host::takePluginOption(letter, argv, options.plugin);
        }
    }
    for (; optind < argc; ++optind) {
        options.words.emplace_back(argv[optind]);
    }
    return options;
}

} // namespace ipmib::cli
