// SPDX-License-Identifier: BSD-3-Clause
// Names, values, defaults and limits of radvd's interface options.
#include "advertisements/radvd_conf.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <iterator>

namespace ipmib::platform
{
namespace
{

template <class Field>
struct Option {
    std::string_view name;
    Field RadvdInterface::*field;
};

constexpr Option<bool> switches[] = {
    {"AdvSendAdvert", &RadvdInterface::sendAdverts},      {"AdvManagedFlag", &RadvdInterface::managed},
    {"AdvOtherConfigFlag", &RadvdInterface::otherConfig}, {"AdvHomeAgentFlag", &RadvdInterface::mobile},
    {"AdvHomeAgentInfo", &RadvdInterface::mobile},        {"AdvIntervalOpt", &RadvdInterface::mobile},
    {"AdvRouterAddr", &RadvdInterface::mobile}, // an option of a prefix
};
constexpr Option<std::uint32_t> numbers[] = {
    {"AdvLinkMTU", &RadvdInterface::linkMtu},
    {"AdvReachableTime", &RadvdInterface::reachableMs},
    {"AdvRetransTimer", &RadvdInterface::retransmitMs},
    {"AdvCurHopLimit", &RadvdInterface::hopLimit},
    {"AdvDefaultLifetime", &RadvdInterface::defaultLifetimeS},
};
constexpr Option<std::uint64_t> seconds[] = {
    {"MaxRtrAdvInterval", &RadvdInterface::maxIntervalMs},
    {"MinRtrAdvInterval", &RadvdInterface::minIntervalMs},
    {"MinDelayBetweenRAs", &RadvdInterface::minDelayMs},
};

template <class Options>
auto *find(const Options &options, std::string_view name)
{
    const auto found = std::find_if(std::begin(options), std::end(options),
                                    [&](const auto &option) { return sameRadvdName(option.name, name); });
    return found == std::end(options) ? nullptr : &*found;
}

bool readNumber(std::string_view word, std::uint32_t &number)
{
    const auto [stop, problem] = std::from_chars(word.data(), word.data() + word.size(), number);
    return problem == std::errc{} && stop == word.data() + word.size();
}

// Whole or decimal seconds; what lies below a millisecond is dropped.
bool readSeconds(std::string_view word, std::uint64_t &milliseconds)
{
    const std::size_t point = word.find('.');
    std::uint32_t whole = 0;
    if (!readNumber(word.substr(0, point), whole)) {
        return false;
    }
    milliseconds = std::uint64_t{whole} * 1'000;
    if (point == std::string_view::npos) {
        return true;
    }
    const std::string_view fraction = word.substr(point + 1);
    std::uint64_t unit = 100;
    for (const char digit : fraction) {
        if (digit < '0' || digit > '9') {
            return false;
        }
        milliseconds += static_cast<std::uint64_t>(digit - '0') * unit;
        unit /= 10;
    }
    return !fraction.empty();
}

// radvd checks these when it sets the interface up, and leaves it alone when one is violated.
std::string refusalOf(const RadvdInterface &interface)
{
    const std::uint64_t lowestMax = interface.mobile ? 70 : 4'000;
    const std::uint64_t lowestMin = interface.mobile ? 30 : 3'000;
    const std::string lowestMinText = interface.mobile ? "0.03" : "3";
    if (interface.maxIntervalMs < lowestMax || interface.maxIntervalMs > 1'800'000) {
        return std::string("MaxRtrAdvInterval must be ") + (interface.mobile ? "0.07" : "4") + " to 1800 seconds";
    }
    if (interface.minIntervalMs < lowestMin || interface.minIntervalMs * 4 > interface.maxIntervalMs * 3) {
        return "MinRtrAdvInterval, by default 0.33 * MaxRtrAdvInterval, must be " + lowestMinText +
               " seconds to 0.75 * MaxRtrAdvInterval";
    }
    if (interface.minDelayMs < lowestMin) {
        return "MinDelayBetweenRAs must be " + lowestMinText + " seconds or more";
    }
    if (interface.linkMtu != 0 && interface.linkMtu < 1280) {
        return "AdvLinkMTU must be 0, or 1280 or more";
    }
    if (interface.reachableMs > 3'600'000) {
        return "AdvReachableTime must be 3600000 milliseconds or less";
    }
    const std::uint64_t lifetimeMs = std::uint64_t{interface.defaultLifetimeS} * 1'000;
    if (lifetimeMs != 0 && (lifetimeMs < interface.maxIntervalMs || lifetimeMs > 9'000'000)) {
        return "AdvDefaultLifetime must be 0, or MaxRtrAdvInterval to 9000 seconds";
    }
    return "";
}

} // namespace

bool sameRadvdName(std::string_view left, std::string_view right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
}

bool isRadvdOption(std::string_view name)
{
    return find(switches, name) != nullptr || find(numbers, name) != nullptr || find(seconds, name) != nullptr;
}

const char *setRadvdOption(RadvdInterface &interface, std::string_view name, std::string_view value)
{
    if (const auto *option = find(switches, name)) {
        const bool on = sameRadvdName(value, "on");
        if (!on && !sameRadvdName(value, "off")) {
            return "'on' or 'off'";
        }
        // Four options turn the rules of Mobile IPv6 on; none of them turns off what another one did.
        interface.*option->field = on || (option->field == &RadvdInterface::mobile && interface.mobile);
        return nullptr;
    }
    if (const auto *option = find(numbers, name)) {
        return readNumber(value, interface.*option->field) ? nullptr : "a whole number";
    }
    if (const auto *option = find(seconds, name)) {
        return readSeconds(value, interface.*option->field) ? nullptr : "a number of seconds";
    }
    return nullptr;
}

void completeRadvdInterface(RadvdInterface &interface)
{
    if (interface.minIntervalMs == RadvdInterface::unset) {
        interface.minIntervalMs = interface.maxIntervalMs * 33 / 100;
    }
    if (interface.defaultLifetimeS == RadvdInterface::unset) {
        const std::uint64_t lifetime = std::max<std::uint64_t>(1, interface.maxIntervalMs * 3 / 1'000);
        interface.defaultLifetimeS = static_cast<std::uint32_t>(lifetime);
    }
    interface.hopLimit &= 0xff; // the message has eight bits for it, and radvd cuts off the rest
    interface.refusal = refusalOf(interface);
}

} // namespace ipmib::platform
