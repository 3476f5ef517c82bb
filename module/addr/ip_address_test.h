// SPDX-License-Identifier: BSD-3-Clause
// What the tests of ipAddressTable share: its columns, a small device, and its rows in words.
#pragma once

#include <scripted/module_test.h>

namespace ipmib::scripted::ip_address
{

inline constexpr std::uint32_t table = 6;
enum Column {
    addrType = 1,
    addr,
    ifIndex,
    addressType,
    prefixPointer,
    origin,
    status,
    created,
    lastChanged,
    rowStatus,
    storageType
};
enum AddressType : std::uint32_t { ipv6 = 2, ipv6z = 4 };

class IpAddress : public ModuleTest
{
  protected:
    void SetUp() override
    {
        ModuleTest::SetUp();
        world().interfaces = {3, 5};
        world().addresses = {address(3, "2001:db8::1"), address(5, "2001:db8::2")};
        world().linkLocalAddresses = {{3, address(3, "fe80::1")}, {5, address(5, "fe80::1")}};
    }
};

inline Request getRow(std::uint32_t kind, const Bytes &bytes)
{
    return get(table).index(addrType, kind).index(addr, bytes);
}
inline Request nextAfter(std::uint32_t kind, const Bytes &bytes)
{
    return getNext(table).index(addrType, kind).index(addr, bytes);
}
inline Reply globalRow(const char *text)
{
    return answered({integer(addrType, ipv6), octets(addr, bytesOf(text))});
}
inline Reply linkLocalRow(const char *text, std::uint32_t zone)
{
    return answered({integer(addrType, ipv6z), octets(addr, zoned(text, zone))});
}

} // namespace ipmib::scripted::ip_address
