// SPDX-License-Identifier: BSD-3-Clause
// IPv4 rows that never change, at the edges of their order.

#include "e2e/scripted_ipv4.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace ipmib::e2e
{

namespace
{

constexpr IpmibIpv4Address addresses[] = {
    {0x7F00'0001, 1, 8, 1, 65535}, {0xC000'0201, 2, 24, 0, 576}, {0xDFFF'FFFF, 3, 0, 1, 65535}};
constexpr IpmibIpv4Neighbour neighbours[] = {{2, 0x0000'0001, IPMIB_MEDIA_OTHER, 0, {}},
                                             {2, 0xC000'0209, IPMIB_MEDIA_DYNAMIC, 6, {2, 0, 0, 0, 0, 9}},
                                             {2, 0xFFFF'FFFF, IPMIB_MEDIA_STATIC, 8, {2, 1, 2, 3, 4, 5, 6, 7}},
                                             {0x7FFF'FFFF, 0xC000'0209, IPMIB_MEDIA_INVALID, 0, {}}};

bool follows = false;

std::uint64_t keyOf(const IpmibIpv4Address &row)
{
    return row.address;
}

std::uint64_t keyOf(const IpmibIpv4Neighbour &row)
{
    return std::uint64_t{row.if_index} << 32 | row.address;
}

template <class Rows, class Row>
int fill(const Rows &rows, Row *row, auto matches)
{
    const auto found = std::find_if(std::begin(rows), std::end(rows), matches);
    if (!follows || found == std::end(rows)) {
        return -1;
    }
    *row = *found;
    return 0;
}

int follow(char *, size_t)
{
    follows = true;
    return 0;
}

int findAddress(std::uint32_t address, IpmibIpv4Address *row)
{
    return fill(addresses, row, [=](const IpmibIpv4Address &one) { return keyOf(one) == address; });
}

int nextAddress(std::uint32_t address, IpmibIpv4Address *row)
{
    return fill(addresses, row, [=](const IpmibIpv4Address &one) { return keyOf(one) > address; });
}

int findNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour *row)
{
    const std::uint64_t key = std::uint64_t{ifIndex} << 32 | address;
    return fill(neighbours, row, [=](const IpmibIpv4Neighbour &one) { return keyOf(one) == key; });
}

int nextNeighbour(std::uint32_t ifIndex, std::uint32_t address, IpmibIpv4Neighbour *row)
{
    const std::uint64_t key = std::uint64_t{ifIndex} << 32 | address;
    return fill(neighbours, row, [=](const IpmibIpv4Neighbour &one) { return keyOf(one) > key; });
}

} // namespace

const IpmibIpv4Hooks scriptedIpv4 = {follow, findAddress, nextAddress, findNeighbour, nextNeighbour};

} // namespace ipmib::e2e
