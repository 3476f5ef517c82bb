// SPDX-License-Identifier: BSD-3-Clause
// What radvd.conf says of router advertisements.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace ipmib::platform
{

struct RadvdInterface {
    static constexpr std::uint32_t unset = 0xffffffff;

    unsigned line = 0; // where its definition begins
    bool sendAdverts = false;
    bool managed = false;
    bool otherConfig = false;
    bool mobile = false; // an option of Mobile IPv6 is on, whose lower limits of intervals then hold
    std::uint64_t maxIntervalMs = 600'000;
    std::uint64_t minIntervalMs = unset;
    std::uint64_t minDelayMs = 3'000;
    std::uint32_t linkMtu = 0; // of the MTU option; 0 for no option
    std::uint32_t reachableMs = 0;
    std::uint32_t retransmitMs = 0;
    std::uint32_t hopLimit = 64;
    std::uint32_t defaultLifetimeS = unset;
    // Why radvd sends nothing on this interface although it is told to; empty when nothing stands against it.
    std::string refusal;
};

// Names in the file are compared without regard to case: radvd does so since 2.20.
bool sameRadvdName(std::string_view left, std::string_view right);

// Whether the option is one of those that count here.
bool isRadvdOption(std::string_view name);

// Takes the value of such an option. Returns null, or what a value of it must be.
const char *setRadvdOption(RadvdInterface &interface, std::string_view name, std::string_view value);

// At the end of a definition: fills in the defaults that depend on other options, and tells whether radvd would refuse.
void completeRadvdInterface(RadvdInterface &interface);

using RadvdConf = std::map<std::string, RadvdInterface, std::less<>>; // by interface name

// Reads the text of the file. On success fills `conf`; otherwise leaves it alone and returns one line that names file,
// line, what was expected and what was found.
std::optional<std::string> parseRadvdConf(std::string_view text, std::string_view file, RadvdConf &conf);

} // namespace ipmib::platform
