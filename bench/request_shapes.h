// SPDX-License-Identifier: BSD-3-Clause
// The module's tables as a benchmark asks them.
#pragma once

#include "free_message.h"
#include "mibtree/catalogue.h"

#include <cstdint>

struct TableShape {
    const char *name;
    std::uint32_t id;
    std::uint32_t indexCount;
    std::uint32_t columnCount;

    bool isScalars() const { return indexCount == 0; } // they are read by get alone
};

consteval TableShape shape(const char *name, std::uint32_t id)
{
    return {name, id, ipmib::mibtree::indexColumns(id), ipmib::mibtree::servedColumns(id)};
}

inline constexpr TableShape shapes[] = {
    shape("scalars", 1),
    shape("ipv6InterfaceTable", 2),
    shape("ipSystemStatsTable", 3),
    shape("ipIfStatsTable", 4),
    shape("ipAddressPrefixTable", 5),
    shape("ipAddressTable", 6),
    shape("ipNetToPhysicalTable", 7),
    shape("ipDefaultRouterTable", 8),
    shape("ipv6RouterAdvertTable", 9),
    shape("icmpStatsTable", 10),
    shape("icmpMsgStatsTable", 11),
};

// Adds the index of a row of the free platform that has both values and, for a get-next, a successor.
void addIndex(FreeRequest &request, const TableShape &shape, bool next);

// Adds the first value column, or all of them.
void addColumns(FreeRequest &request, const TableShape &shape, bool all);
