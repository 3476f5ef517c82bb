// SPDX-License-Identifier: BSD-3-Clause
// What the tests of ipNetToPhysicalTable share: its columns, a small device, and its rows in words.
#pragma once

#include <scripted/module_test.h>

namespace ipmib::scripted::ip_net_to_physical
{

inline constexpr std::uint32_t table = 7;
enum Column { ifIndex = 1, addressType, netAddress, physAddress, lastUpdated, type, state, rowStatus };
enum AddressType : std::uint32_t { ipv6 = 2, ipv6z = 4 };

class IpNetToPhysical : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5};
        world().neighbours = {neighbour(3, "2001:db8::1"), neighbour(3, "2001:db8::2"), neighbour(3, "fe80::1"),
                              neighbour(5, "fe80::1"), neighbour(5, "fe80::2")};
    }
};

inline Request withIndex(Request request, std::uint32_t interface, std::uint32_t kind, const Bytes &address)
{
    return request.index(ifIndex, interface).index(addressType, kind).index(netAddress, address);
}
inline Request getRow(std::uint32_t interface, std::uint32_t kind, const Bytes &address)
{
    return withIndex(get(table), interface, kind, address);
}
inline Request nextAfter(std::uint32_t interface, std::uint32_t kind, const Bytes &address)
{
    return withIndex(getNext(table), interface, kind, address);
}

inline Reply globalRow(std::uint32_t interface, const char *address)
{
    return answered({integer(ifIndex, interface), integer(addressType, ipv6), octets(netAddress, bytesOf(address))});
}
inline Reply linkLocalRow(std::uint32_t interface, const char *address)
{
    return answered(
        {integer(ifIndex, interface), integer(addressType, ipv6z), octets(netAddress, zoned(address, interface))});
}

// What one enumeration leaves in the log around its lookups.
inline Calls enumeration(const Calls &lookups)
{
    Calls calls = {"IP6_DaemonCheck(1)", "IF_IteratorInitialize()", "IF_Select_Init(5)", "IF_SelectTypeSetGroup(2)",
                   "IF_SelectCondition_Set(8)"};
    calls.insert(calls.end(), lookups.begin(), lookups.end());
    calls.emplace_back("IF_IteratorFinalize()");
    return calls;
}

} // namespace ipmib::scripted::ip_net_to_physical
