// SPDX-License-Identifier: BSD-3-Clause
// Prefixes and default routers of both versions of IP.
#include "walks/model_parts.h"

namespace ipmib::cli
{
namespace
{

const Identifier ipAddressPrefixEntry{1, 3, 6, 1, 2, 1, 4, 32, 1};
const Identifier ipDefaultRouterEntry{1, 3, 6, 1, 2, 1, 4, 37, 1};

constexpr std::uint64_t infinite = UINT32_MAX;
constexpr Word prefixOrigins[] = {{1, "other"}, {2, "manual"}, {3, "wellknown"}, {4, "dhcp"}, {5, "routeradv"}};
constexpr Word preferences[] = {{1, "high"}, {0, "medium"}, {UINT32_MAX, "low"}};

void putLifetime(OrderedJson &object, const char *name, std::uint64_t seconds)
{
    if (seconds == infinite) {
        object[name] = "infinite";
    } else {
        object[name] = seconds;
    }
}

// Whether nothing but zeros is behind so many bits.
bool isPrefix(const Address &address, std::uint32_t length)
{
    for (std::size_t bit = length; bit < address.octets.size() * 8; ++bit) {
        if ((static_cast<unsigned char>(address.octets[bit / 8]) >> (7 - bit % 8) & 1) != 0) {
            return false;
        }
    }
    return length <= address.octets.size() * 8;
}

} // namespace

void addPrefixes(const Recording &walk, ModelledInterfaces &interfaces)
{
    for (const auto &[index, row] : rowsBelow(walk, ipAddressPrefixEntry)) {
        const std::uint32_t length = index.back();
        const auto address = inetAddress(Identifier(index.begin(), index.end() - 1), 1);
        OrderedJson *interface = address ? interfaceOf(interfaces, index.front(), address->version) : nullptr;
        if (interface == nullptr || address->isLinkLocal() || !isPrefix(*address, length)) {
            continue;
        }
        OrderedJson entry;
        entry["prefix"] = address->text() + "/" + std::to_string(length);
        putWord(entry, "origin", row.number(5), prefixOrigins);
        entry["onLink"] = row.number(6).value_or(isTrue) == isTrue;
        entry["autonomous"] = row.number(7) == isTrue;
        const std::uint64_t valid = row.number(9).value_or(infinite);
        putLifetime(entry, "valid", valid);
        if (const auto preferred = row.number(8); preferred && *preferred <= valid) {
            putLifetime(entry, "preferred", *preferred);
        }
        (*interface)[address->version == IPMIB_IPV4 ? "ipv4Prefixes" : "prefixes"].push_back(entry);
    }
}

void addRouters(const Recording &walk, ModelledInterfaces &interfaces)
{
    constexpr std::uint64_t longestLifetime = 65'535;
    for (const auto &[index, row] : rowsBelow(walk, ipDefaultRouterEntry)) {
        const auto address = inetAddress(Identifier(index.begin(), index.end() - 1), 0);
        OrderedJson *interface = address ? interfaceOf(interfaces, index.back(), address->version) : nullptr;
        if (interface == nullptr || !address->isUnicast()) {
            continue;
        }
        OrderedJson entry;
        entry["address"] = address->text();
        putWord(entry, "preference", row.number(5), preferences);
        if (const auto lifetime = row.number(4); lifetime && *lifetime < longestLifetime) {
            entry["lifetime"] = *lifetime;
        }
        (*interface)[address->version == IPMIB_IPV4 ? "ipv4Routers" : "routers"].push_back(entry);
    }
}

} // namespace ipmib::cli
