// SPDX-License-Identifier: BSD-3-Clause
// The rows of ipAddrTable: one for each IPv4 address.

#include "ipv4/address_rows.h"

#include "values.h"

namespace ipmib::agent
{

namespace
{

using Row = AddressRows::Row;

constexpr std::uint32_t maskOf(std::uint8_t length)
{
    return length == 0 ? 0 : UINT32_MAX << (32 - length);
}

constexpr AddressRows::Column allColumns[] = {
    {1, [](const Row &row) { return ipAddress(row.address); }},               // ipAdEntAddr
    {2, [](const Row &row) { return integer(row.platform.if_index); }},       // ipAdEntIfIndex
    {3, [](const Row &row) { return ipAddress(row.mask); }},                  // ipAdEntNetMask
    {4, [](const Row &row) { return integer(row.platform.broadcast_bit); }},  // ipAdEntBcastAddr
    {5, [](const Row &row) { return integer(row.platform.reassembly_max); }}, // ipAdEntReasmMaxSize
};

bool complete(Row &row)
{
    row.address = octetsOf(row.platform.address);
    row.mask = octetsOf(maskOf(row.platform.prefix_length));
    return true;
}

} // namespace

std::span<const AddressRows::Column> AddressRows::columns() const
{
    return allColumns;
}

bool AddressRows::find(std::span<const oid> index, Row &row) const
{
    const auto number = indexNumber(index, addressIndex);
    return number && ipv4_.find_address(static_cast<std::uint32_t>(*number), &row.platform) == 0 && complete(row);
}

bool AddressRows::after(std::span<const oid> index, Row &row) const
{
    const std::uint64_t number = lastNotBehind(index, addressIndex);
    return ipv4_.next_address(static_cast<std::uint32_t>(number), &row.platform) == 0 && complete(row);
}

std::array<host::SubId, 4> AddressRows::index(const Row &row) const
{
    const Ipv4Octets &address = row.address;
    return {address[0], address[1], address[2], address[3]};
}

} // namespace ipmib::agent
