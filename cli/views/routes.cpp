// SPDX-License-Identifier: BSD-3-Clause
// The routes: all of them, those within a prefix, or those by which an address is reached.
#include "local_device.h"
#include "text.h"
#include "view.h"

#include "host/command_line.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <stdexcept>

namespace ipmib::cli
{
namespace
{

constexpr ListingColumn routeColumns[] = {
    {"DESTINATION", "destination", Align::left, 0, Role::key},
    {"NEXT HOP", "nextHop", Align::left, 0, Role::key},
    {"INTERFACE", "interface"},
    {"TYPE", "type", Align::left, 2},
    {"PROTOCOL", "protocol", Align::left, 1},
    {"METRIC", "metric", Align::right, 3},
    {"AGE", "age", Align::right, 4, Role::time},
    {"POLICY", "policy", Align::left, 5, Role::key},
};

enum RouteIndexPlace { typePart, destinationPart, lengthPart, policyPart, nextHopTypePart, nextHopPart };
enum RouteColumnPlace { ifIndexColumn, typeColumn, protocolColumn, ageColumn, metricColumn };

// A destination, of which what lies behind the length is 0.
struct Prefix {
    std::uint32_t version = 0;
    std::array<std::uint8_t, 16> octets{};
    std::uint32_t length = 0;

    std::size_t size() const { return version == IPMIB_IPV4 ? 4 : octets.size(); }
    bool holds(std::span<const std::uint8_t> address) const
    {
        const std::uint32_t whole = length / 8;
        const unsigned rest = length % 8;
        const auto mask = static_cast<std::uint8_t>(0xFF00u >> rest);
        return address.size() == size() && std::equal(octets.begin(), octets.begin() + whole, address.begin()) &&
               (rest == 0 || octets[whole] == (address[whole] & mask));
    }
};

// "2001:db8::/32"; without a length it is an address.
Prefix readPrefix(const std::string &text)
{
    Prefix prefix;
    const std::size_t slash = text.find('/');
    const std::string address = text.substr(0, slash);
    prefix.version = address.find(':') == std::string::npos ? IPMIB_IPV4 : IPMIB_IPV6;
    prefix.length = static_cast<std::uint32_t>(prefix.size()) * 8;
    std::uint32_t length = prefix.length;
    bool isGood = inet_pton(prefix.version == IPMIB_IPV4 ? AF_INET : AF_INET6, address.c_str(), &prefix.octets) == 1;
    if (slash != std::string::npos) {
        const char *const last = text.data() + text.size();
        const auto [end, error] = std::from_chars(text.data() + slash + 1, last, length);
        isGood = isGood && error == std::errc() && end == last && length <= prefix.length;
    }
    if (!isGood) {
        throw host::UsageError("\"" + text + "\" is no prefix or address like 192.0.2.0/24 or 2001:db8::1");
    }
    prefix.length = length;
    const Prefix whole = prefix;
    for (std::size_t i = 0; i < prefix.octets.size(); ++i) {
        const unsigned bits = std::clamp<int>(static_cast<int>(length) - static_cast<int>(i) * 8, 0, 8);
        prefix.octets[i] = static_cast<std::uint8_t>(whole.octets[i] & 0xFF00u >> bits);
    }
    return prefix;
}

// What all rows with a destination that is not below this one are behind.
host::Oid placeBefore(const Prefix &prefix)
{
    host::Oid place{prefix.version, static_cast<host::SubId>(prefix.size())};
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        place.append(prefix.octets[i]);
    }
    return place;
}

Cell nextHopCell(const TableReader &rows)
{
    return rows.key().octets(nextHopPart).empty() ? emptyCell() : addressCell(rows, nextHopPart);
}

Cell interfaceOf(const TableReader &rows)
{
    const host::Value *ifIndex = rows.value(ifIndexColumn);
    return ifIndex == nullptr || ifIndex->number == 0 ? emptyCell() : interfaceNumberCell(rows, ifIndexColumn);
}

Cell metricCell(const TableReader &rows)
{
    const host::Value *metric = rows.value(metricColumn);
    constexpr std::uint64_t none = UINT32_MAX;
    return metric == nullptr || metric->number == none ? emptyCell() : numberCell(rows, metricColumn);
}

Cell ageCell(const TableReader &rows)
{
    const host::Value *age = rows.value(ageColumn);
    return age == nullptr ? emptyCell() : Cell{durationText(age->number), age->number, {}};
}

Row rowOf(const TableReader &rows)
{
    const std::string length = std::to_string(rows.key().number(lengthPart));
    std::string policy;
    const host::Oid numbers = rows.key().objectId(policyPart);
    for (const host::SubId number : numbers.view()) {
        policy += (policy.empty() ? "" : ".") + std::to_string(number);
    }
    const Cell destination = addressCell(rows, destinationPart);
    return {textCell(destination.text + "/" + length, destination.tone),
            nextHopCell(rows),
            interfaceOf(rows),
            labelCell(rows, typeColumn),
            labelCell(rows, protocolColumn),
            metricCell(rows),
            ageCell(rows),
            textCell(policy)};
}

TableReader reader(LocalDevice &device)
{
    return {device,
            "inetCidrRouteEntry",
            {"inetCidrRouteIfIndex", "inetCidrRouteType", "inetCidrRouteProto", "inetCidrRouteAge",
             "inetCidrRouteMetric1"}};
}

// Routes to everything, which come first of their version.
void listDefaults(LocalDevice &device, std::uint32_t version, const Sink &sink)
{
    TableReader rows = reader(device);
    rows.startBehind(host::Oid{version}.view());
    while (rows.next() && rows.key().number(typePart) == version && rows.key().number(lengthPart) == 0) {
        sink(rowOf(rows));
    }
}

void listRoutes(LocalDevice &device, const std::string &prefix, const Sink &sink)
{
    if (prefix == "default") {
        if (device.shown() != Version::ipv6) {
            listDefaults(device, IPMIB_IPV4, sink);
        }
        if (device.shown() != Version::ipv4) {
            listDefaults(device, IPMIB_IPV6, sink);
        }
        return;
    }
    Prefix within;
    TableReader rows = reader(device);
    if (!prefix.empty()) {
        within = readPrefix(prefix);
        rows.startBehind(placeBefore(within).view());
    } else if (device.shown() == Version::ipv6) {
        rows.startBehind(host::Oid{IPMIB_IPV6}.view());
    }
    while (rows.next()) {
        if (within.version != 0 && !within.holds(rows.key().octets(destinationPart))) {
            return;
        }
        if (rows.key().number(lengthPart) >= within.length) {
            sink(rowOf(rows));
        }
    }
}

void listRouteTo(LocalDevice &device, const std::string &text, const Sink &sink)
{
    if (text.empty() || text.find('/') != std::string::npos) {
        listRoutes(device, text, sink);
        return;
    }
    const Prefix address = readPrefix(text);
    const IpmibRouteHooks *routes = device.routes();
    IpmibRoute first;
    if (routes == nullptr || routes->match(address.version, address.octets.data(), &first) != 0) {
        throw std::runtime_error("there is no route to " + text);
    }
    Prefix prefix{address.version, {}, first.key.prefix_length};
    std::ranges::copy(first.key.destination, prefix.octets.begin());
    TableReader rows = reader(device);
    rows.startBehind(placeBefore(prefix).view());
    while (rows.next() &&
           std::ranges::equal(rows.key().octets(destinationPart), std::span(prefix.octets).first(prefix.size()))) {
        const host::Value *metric = rows.value(metricColumn);
        if (rows.key().number(lengthPart) == prefix.length && metric != nullptr &&
            static_cast<std::int32_t>(metric->number) == first.metric) {
            sink(rowOf(rows));
        }
    }
}

} // namespace

const View routesView{"routes", routeColumns, listRoutes, true};
const View routeView{"route", routeColumns, listRouteTo, true};

} // namespace ipmib::cli
