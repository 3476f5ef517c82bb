// SPDX-License-Identifier: BSD-3-Clause
// What the tests of ipAddressPrefixTable share: its columns, a small device, and its rows in words.
#pragma once

#include <scripted/module_test.h>

namespace ipmib::scripted::ip_address_prefix
{

inline constexpr std::uint32_t table = 5;
enum Column {
    ifIndex = 1,
    prefixType,
    prefixPrefix,
    prefixLength,
    origin,
    onLinkFlag,
    autonomousFlag,
    preferredLifetime,
    validLifetime
};
enum AddressType : std::uint32_t { ipv6 = 2, ipv6z = 4 };

class IpAddressPrefix : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5};
        world().prefixes = {prefix(3, "2001:db8:1::", 48), prefix(3, "2001:db8:1::", 64),
                            prefix(5, "2001:db8:2::", 64)};
        world().linkLocal = {3};
    }
};

inline Request withIndex(Request request, std::uint32_t interface, std::uint32_t kind, const Bytes &bytes,
                         std::uint32_t length)
{
    return request.index(ifIndex, interface)
        .index(prefixType, kind)
        .index(prefixPrefix, bytes)
        .index(prefixLength, length);
}
inline Request getRow(std::uint32_t interface, std::uint32_t kind, const Bytes &bytes, std::uint32_t length)
{
    return withIndex(get(table), interface, kind, bytes, length);
}
inline Request nextAfter(std::uint32_t interface, std::uint32_t kind, const Bytes &bytes, std::uint32_t length)
{
    return withIndex(getNext(table), interface, kind, bytes, length);
}

inline Reply row(std::uint32_t interface, const char *address, std::uint32_t length)
{
    return answered({integer(ifIndex, interface), integer(prefixType, ipv6), octets(prefixPrefix, bytesOf(address)),
                     unsigned32(prefixLength, length)});
}
inline Reply linkLocalRow(std::uint32_t interface)
{
    return answered({integer(ifIndex, interface), integer(prefixType, ipv6z),
                     octets(prefixPrefix, zoned("fe80::", interface)), unsigned32(prefixLength, 10)});
}

// What looking at an interface that is the key's own leaves behind its lookups.
inline Calls withClosingSelection(Calls lookups)
{
    lookups.insert(lookups.begin(), "IP6_DaemonCheck(1)");
    lookups.insert(lookups.end(), {standardSelection, "IF_IteratorInitialize()", "IF_IteratorFinalize()"});
    return lookups;
}
// What the walk over the interfaces after the key's own leaves.
inline Calls followingInterfaces(Calls before, const Calls &lookups)
{
    before.insert(before.begin(), "IP6_DaemonCheck(1)");
    before.insert(before.end(), {standardSelection, "IF_IteratorInitialize()"});
    before.insert(before.end(), lookups.begin(), lookups.end());
    before.emplace_back("IF_IteratorFinalize()");
    return before;
}

} // namespace ipmib::scripted::ip_address_prefix
