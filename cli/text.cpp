// SPDX-License-Identifier: BSD-3-Clause
// Values as people write them.
#include "text.h"

#include "local_device.h"

#include "host/syntax.h"

#include <ipmib/big_endian.h>

#include <arpa/inet.h>

#include <cmath>
#include <cstdio>

namespace ipmib::cli
{
namespace
{

constexpr std::size_t zonedAddressSize = sizeof(in6_addr) + sizeof(IpmibBe32);

template <class... Arguments>
std::string format(const char *pattern, Arguments... arguments)
{
    char text[64];
    std::snprintf(text, sizeof text, pattern, arguments...);
    return text;
}

} // namespace

std::string addressText(const LocalDevice &device, std::span<const std::uint8_t> octets)
{
    char text[INET6_ADDRSTRLEN];
    if (octets.size() == sizeof(in_addr) && inet_ntop(AF_INET, octets.data(), text, sizeof text) != nullptr) {
        return text;
    }
    if ((octets.size() != sizeof(in6_addr) && octets.size() != zonedAddressSize) ||
        inet_ntop(AF_INET6, octets.data(), text, sizeof text) == nullptr) {
        return hexText(octets);
    }
    if (octets.size() == sizeof(in6_addr)) {
        return text;
    }
    return std::string(text) + "%" + device.interfaceName(ipmib_be32_read(octets.data() + sizeof(in6_addr)));
}

Tone toneOfAddress(std::span<const std::uint8_t> octets)
{
    return octets.size() == sizeof(in_addr)                                         ? Tone::ipv4
           : octets.size() == sizeof(in6_addr) || octets.size() == zonedAddressSize ? Tone::ipv6
                                                                                    : Tone::plain;
}

std::string hexText(std::span<const std::uint8_t> octets)
{
    std::string text;
    for (const std::uint8_t octet : octets) {
        text += format(text.empty() ? "%02x" : ":%02x", octet);
    }
    return text;
}

std::string durationText(std::uint64_t seconds)
{
    const auto days = static_cast<unsigned long long>(seconds / 86'400);
    const auto hours = static_cast<unsigned>(seconds / 3'600 % 24);
    const auto minutes = static_cast<unsigned>(seconds / 60 % 60);
    const std::string clock = format("%02u:%02u:%02u", hours, minutes, static_cast<unsigned>(seconds % 60));
    return days == 0 ? clock : format("%llud ", days) + clock;
}

std::string millisecondsText(std::uint64_t milliseconds)
{
    return milliseconds < 1'000 ? std::to_string(milliseconds) + "ms"
                                : format("%gs", static_cast<double>(milliseconds) / 1'000);
}

std::string rateText(double perSecond)
{
    constexpr double thousand = 1'000;
    const char *unit = "";
    for (const char *larger : {"k", "M", "G", "T"}) {
        if (perSecond < 999.5) { // what would be rounded to four digits
            break;
        }
        perSecond /= thousand;
        unit = larger;
    }
    if (*unit == '\0') {
        return format("%.3g", perSecond);
    }
    return format(perSecond < 9.995 ? "%.2f%s" : perSecond < 99.95 ? "%.1f%s" : "%.0f%s", perSecond, unit);
}

std::string labelText(const MibSyntax &syntax, std::uint64_t number)
{
    for (const MibEnumItem &item : host::labelsOf(syntax)) {
        if (static_cast<std::uint32_t>(item.lValue) == static_cast<std::uint32_t>(number)) {
            return item.pszLabel;
        }
    }
    return "";
}

} // namespace ipmib::cli
