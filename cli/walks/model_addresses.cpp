// SPDX-License-Identifier: BSD-3-Clause
// Addresses and neighbours of both versions of IP, from the newer tables or from those of IPv4 alone.
#include "walks/model.h"

#include <arpa/inet.h>

#include <algorithm>
#include <set>

namespace ipmib::cli
{
namespace
{

const Identifier ipAddrEntry{1, 3, 6, 1, 2, 1, 4, 20, 1};
const Identifier ipNetToMediaEntry{1, 3, 6, 1, 2, 1, 4, 22, 1};
const Identifier ipAddressEntry{1, 3, 6, 1, 2, 1, 4, 34, 1};
const Identifier ipNetToPhysicalEntry{1, 3, 6, 1, 2, 1, 4, 35, 1};

constexpr std::uint32_t ipv4 = 1;
constexpr std::uint32_t ipv6 = 2;
constexpr std::uint32_t ipv6WithZone = 4;
constexpr std::size_t ipv4Size = 4;
constexpr std::size_t ipv6Size = 16;
constexpr std::size_t zoneSize = 4;
constexpr std::uint64_t ticksPerSecond = 100;

struct Word {
    std::uint64_t code;
    const char *text;
};
constexpr Word origins[] = {{1, "other"}, {2, "manual"}, {4, "dhcp"}, {5, "linklayer"}, {6, "random"}};
constexpr Word statuses[] = {{1, "preferred"}, {2, "deprecated"}, {6, "tentative"}, {7, "duplicate"}};
constexpr Word neighbourTypes[] = {{2, "invalid"}, {3, "dynamic"}, {4, "static"}, {5, "local"}};
constexpr Word neighbourStates[] = {{1, "reachable"}, {2, "stale"},   {3, "delay"},     {4, "probe"},
                                    {5, "invalid"},   {6, "unknown"}, {7, "incomplete"}};

template <std::size_t count>
void putWord(OrderedJson &object, const char *name, const std::optional<std::uint64_t> &code,
             const Word (&words)[count])
{
    for (const Word &word : words) {
        if (code && word.code == *code) {
            object[name] = word.text;
        }
    }
}

struct Address {
    std::uint32_t version = 0;
    std::string octets; // without a zone

    std::string text() const
    {
        char text[INET6_ADDRSTRLEN] = "";
        inet_ntop(version == ipv4 ? AF_INET : AF_INET6, octets.data(), text, sizeof text);
        return text;
    }
    bool isUnicast() const
    {
        const auto first = static_cast<unsigned char>(octets.front());
        const bool isAny = std::ranges::all_of(octets, [](char octet) { return octet == 0; });
        return !isAny && (version == ipv4 ? first < 224 && first != 0 : first != 0xFF);
    }
};

std::optional<std::string> octetsOf(const Identifier &ids, std::size_t begin, std::size_t count)
{
    std::string octets;
    for (std::size_t i = begin; i < begin + count; ++i) {
        if (i >= ids.size() || ids[i] > UINT8_MAX) {
            return std::nullopt;
        }
        octets += static_cast<char>(ids[i]);
    }
    return octets;
}

// InetAddressType and InetAddress, at the end of an index.
std::optional<Address> inetAddress(const Identifier &index, std::size_t begin)
{
    if (index.size() < begin + 2) {
        return std::nullopt;
    }
    const std::uint32_t type = index[begin];
    const std::uint32_t size = index[begin + 1];
    const std::size_t expected = type == ipv4 ? ipv4Size : type == ipv6 ? ipv6Size : ipv6Size + zoneSize;
    if ((type != ipv4 && type != ipv6 && type != ipv6WithZone) || size != expected ||
        index.size() != begin + 2 + size) {
        return std::nullopt;
    }
    const auto octets = octetsOf(index, begin + 2, type == ipv4 ? ipv4Size : ipv6Size);
    return octets ? std::optional(Address{type == ipv4 ? ipv4 : ipv6, *octets}) : std::nullopt;
}

OrderedJson *interfaceOf(ModelledInterfaces &interfaces, std::optional<std::uint64_t> ifIndex, std::uint32_t version)
{
    const auto found = ifIndex ? interfaces.find(static_cast<std::uint32_t>(*ifIndex)) : interfaces.end();
    const bool hasVersion = found != interfaces.end() && (version == ipv4 || !found->second.contains("ipv6"));
    return hasVersion ? &found->second : nullptr;
}

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
    putWord(entry, "origin", row.number(6), origins);
    putWord(entry, "status", row.number(7), statuses);
    putMoment(entry, "created", row.number(8));
    if (row.number(9).value_or(0) > row.number(8).value_or(0)) {
        putMoment(entry, "changed", row.number(9));
    }
    constexpr std::uint64_t anycast = 2;
    if (address.version == ipv6 && row.number(4) == anycast) {
        entry["anycast"] = true;
    }
    interface[address.version == ipv4 ? "ipv4Addresses" : "addresses"].push_back(entry);
}

bool isLinkLocal(const Address &address)
{
    return address.version == ipv6 && address.octets[0] == '\xFE' && (address.octets[1] & '\xC0') == '\x80';
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
        (*interface)[address.version == ipv4 ? "ipv4Neighbours" : "neighbours"].push_back(entry);
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
            (isLinkLocal(*address) && !withLinkLocal.insert(*ifIndex).second) ||
            (!isLinkLocal(*address) && !known.insert(address->octets).second)) {
            continue;
        }
        addAddress(*address, row, prefixLength(row, *address), *interface);
    }
    for (const auto &[index, row] : rowsBelow(walk, ipAddrEntry)) {
        const auto octets = index.size() == ipv4Size ? octetsOf(index, 0, ipv4Size) : std::nullopt;
        OrderedJson *interface = interfaceOf(interfaces, row.number(2), ipv4);
        if (octets && interface != nullptr && Address{ipv4, *octets}.isUnicast() && known.insert(*octets).second) {
            (*interface)["ipv4Addresses"].push_back(Address{ipv4, *octets}.text() + "/" +
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
            addNeighbour({ipv4, *octets}, index.front(), entry, interfaces);
        }
    }
}

} // namespace ipmib::cli
