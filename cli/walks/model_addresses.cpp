// SPDX-License-Identifier: BSD-3-Clause
// Addresses and neighbours of both versions of IP, from the newer tables or from those of IPv4 alone.
#include "walks/model_parts.h"

#include <set>

namespace ipmib::cli
{
namespace
{

const Identifier ipAddrEntry{1, 3, 6, 1, 2, 1, 4, 20, 1};
const Identifier ipNetToMediaEntry{1, 3, 6, 1, 2, 1, 4, 22, 1};
const Identifier ipAddressEntry{1, 3, 6, 1, 2, 1, 4, 34, 1};
const Identifier ipNetToPhysicalEntry{1, 3, 6, 1, 2, 1, 4, 35, 1};

constexpr Word addressOrigins[] = {{1, "other"}, {2, "manual"}, {4, "dhcp"}, {5, "linklayer"}, {6, "random"}};
constexpr Word statuses[] = {{1, "preferred"}, {2, "deprecated"}, {6, "tentative"}, {7, "duplicate"}};
constexpr Word neighbourTypes[] = {{2, "invalid"}, {3, "dynamic"}, {4, "static"}, {5, "local"}};
constexpr Word neighbourStates[] = {{1, "reachable"}, {2, "stale"},   {3, "delay"},     {4, "probe"},
                                    {5, "invalid"},   {6, "unknown"}, {7, "incomplete"}};

// Members of seconds since boot; those of the start are left out.
void putMoment(OrderedJson &object, const char *name, const std::optional<std::uint64_t> &ticks)
{
    if (ticks && *ticks >= ticksPerSecond) {
        object[name] = *ticks / ticksPerSecond;
    }
}

void addAddress(const Address &address, const WalkRow &row, std::uint32_t length, OrderedJson &interface)
{
    OrderedJson entry;
    entry["address"] = address.text() + "/" + std::to_string(length);
    putWord(entry, "origin", row.number(6), addressOrigins);
    putWord(entry, "status", row.number(7), statuses);
    putMoment(entry, "created", row.number(8));
    if (row.number(9).value_or(0) > row.number(8).value_or(0)) {
        putMoment(entry, "changed", row.number(9));
    }
    constexpr std::uint64_t anycast = 2;
    if (address.version == IPMIB_IPV6 && row.number(4) == anycast) {
        entry["anycast"] = true;
    }
    interface[address.version == IPMIB_IPV4 ? "ipv4Addresses" : "addresses"].push_back(entry);
}

// The length of a prefix is the last number of the pointer to it.
std::uint32_t prefixLength(const WalkRow &row, const Address &address)
{
    const auto longest = static_cast<std::uint32_t>(address.octets.size() * 8);
    const auto prefix = row.identifier(5);
    return prefix && prefix->size() > 2 && prefix->back() <= longest ? prefix->back() : longest;
}

std::uint32_t maskLength(const std::string &mask)
{
    std::uint32_t length = 0;
    for (const char octet : mask) {
        for (unsigned bits = static_cast<unsigned char>(octet); (bits & 0x80) != 0; bits <<= 1) {
            ++length;
        }
    }
    return length;
}

void addNeighbour(const Address &address, std::uint64_t ifIndex, OrderedJson entry, ModelledInterfaces &interfaces)
{
    if (OrderedJson *interface = interfaceOf(interfaces, ifIndex, address.version);
        interface != nullptr && address.isUnicast()) {
        entry["address"] = address.text();
        (*interface)[address.version == IPMIB_IPV4 ? "ipv4Neighbours" : "neighbours"].push_back(entry);
    }
}

void putMac(OrderedJson &entry, const std::optional<std::string> &octets)
{
    constexpr std::size_t size = 6;
    if (octets && octets->size() == size) {
        std::string text = support::hexDigits(*octets);
        for (std::size_t i = 1; i < size; ++i) {
            text.insert(i * 3 - 1, 1, ':');
        }
        entry["mac"] = text;
    }
}

} // namespace

void addAddresses(const Recording &walk, ModelledInterfaces &interfaces)
{
    constexpr std::uint64_t broadcast = 3;
    std::set<std::string> known;
    std::set<std::uint64_t> withLinkLocal;
    for (const auto &[index, row] : rowsBelow(walk, ipAddressEntry)) {
        const auto address = inetAddress(index, 0);
        const auto ifIndex = row.number(3);
        OrderedJson *interface = address ? interfaceOf(interfaces, ifIndex, address->version) : nullptr;
        if (interface == nullptr || !address->isUnicast() || row.number(4) == broadcast ||
            (address->isLinkLocal() && !withLinkLocal.insert(*ifIndex).second) ||
            (!address->isLinkLocal() && !known.insert(address->octets).second)) {
            continue;
        }
        addAddress(*address, row, prefixLength(row, *address), *interface);
    }
    for (const auto &[index, row] : rowsBelow(walk, ipAddrEntry)) {
        const auto octets = index.size() == ipv4Size ? octetsOf(index, 0, ipv4Size) : std::nullopt;
        OrderedJson *interface = interfaceOf(interfaces, row.number(2), IPMIB_IPV4);
        if (octets && interface != nullptr && Address{IPMIB_IPV4, *octets}.isUnicast() &&
            known.insert(*octets).second) {
            (*interface)["ipv4Addresses"].push_back(Address{IPMIB_IPV4, *octets}.text() + "/" +
                                                    std::to_string(maskLength(row.octets(3).value_or(""))));
        }
    }
}

void addNeighbours(const Recording &walk, ModelledInterfaces &interfaces)
{
    std::set<Identifier, IdentifierOrder> known;
    for (const auto &[index, row] : rowsBelow(walk, ipNetToPhysicalEntry)) {
        const auto address = inetAddress(index, 1);
        if (!address) {
            continue;
        }
        OrderedJson entry;
        entry["address"] = "";
        putMac(entry, row.octets(4));
        putWord(entry, "type", row.number(6), neighbourTypes);
        putWord(entry, "state", row.number(7), neighbourStates);
        if (const auto updated = row.number(5)) {
            entry["updated"] = *updated / ticksPerSecond;
        }
        addNeighbour(*address, index.front(), entry, interfaces);
        known.insert({index.front()});
    }
    for (const auto &[index, row] : rowsBelow(walk, ipNetToMediaEntry)) {
        const auto octets = index.size() == ipv4Size + 1 ? octetsOf(index, 1, ipv4Size) : std::nullopt;
        if (octets && !known.contains({index.front()})) {
            OrderedJson entry;
            entry["address"] = "";
            putMac(entry, row.octets(2));
            putWord(entry, "type", row.number(4), neighbourTypes);
            addNeighbour({IPMIB_IPV4, *octets}, index.front(), entry, interfaces);
        }
    }
}

} // namespace ipmib::cli
