// SPDX-License-Identifier: BSD-3-Clause
// The rows of ipNetToMediaTable: one for each IPv4 neighbour of an interface.

#include "ipv4/neighbour_rows.h"

#include "values.h"

namespace ipmib::agent
{

namespace
{

using Row = NeighbourRows::Row;

constexpr NeighbourRows::Column allColumns[] = {
    {1, [](const Row &row) { return integer(row.platform.if_index); }}, // ipNetToMediaIfIndex
    {2,
     [](const Row &row) {
         return octets(row.platform.link_layer, row.platform.link_layer_size);
     }},                                                            // ipNetToMediaPhysAddress
    {3, [](const Row &row) { return ipAddress(row.address); }},     // ipNetToMediaNetAddress
    {4, [](const Row &row) { return integer(row.platform.type); }}, // ipNetToMediaType
};

constexpr std::uint32_t ifIndexOf(std::uint64_t number)
{
    return static_cast<std::uint32_t>(number >> 32);
}

constexpr std::uint32_t addressOf(std::uint64_t number)
{
    return static_cast<std::uint32_t>(number);
}

bool complete(Row &row)
{
    row.address = octetsOf(row.platform.address);
    return true;
}

} // namespace

std::span<const NeighbourRows::Column> NeighbourRows::columns() const
{
    return allColumns;
}

bool NeighbourRows::find(std::span<const oid> index, Row &row) const
{
    const auto number = indexNumber(index, interfaceAndAddressIndex);
    return number && ipv4_.find_neighbour(ifIndexOf(*number), addressOf(*number), &row.platform) == 0 && complete(row);
}

bool NeighbourRows::after(std::span<const oid> index, Row &row) const
{
    const std::uint64_t number = lastNotBehind(index, interfaceAndAddressIndex);
    return ipv4_.next_neighbour(ifIndexOf(number), addressOf(number), &row.platform) == 0 && complete(row);
}

std::array<host::SubId, 5> NeighbourRows::index(const Row &row) const
{
    const Ipv4Octets &address = row.address;
    return {row.platform.if_index, address[0], address[1], address[2], address[3]};
}

} // namespace ipmib::agent
