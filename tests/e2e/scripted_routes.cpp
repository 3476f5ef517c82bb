// SPDX-License-Identifier: BSD-3-Clause
// One route, which is there when it has been read.

#include "e2e/scripted_routes.h"

#include <ipmib/platform_ip.h>

#include <cstring>

namespace ipmib::e2e
{

namespace
{

unsigned long awaited = 0;
bool follows = false;

IpmibRoute route()
{
    IpmibRoute row{};
    row.key.version = IPMIB_IPV4;
    row.key.destination[0] = 10;
    row.key.prefix_length = 8;
    row.if_index = 2;
    row.type = IPMIB_ROUTE_LOCAL;
    row.protocol = 2;
    return row;
}

int follow(char *, size_t)
{
    follows = true;
    return 0;
}

void limit(uint64_t) {}

bool isRead()
{
    return follows && awaited == 0;
}

uint32_t areRead()
{
    if (isRead()) {
        return 1;
    }
    --awaited;
    return 0;
}

uint64_t count(uint32_t version)
{
    return version == IPMIB_IPV4 && isRead() ? 1 : 0;
}

uint64_t discards()
{
    return 0;
}

int find(const IpmibRouteKey *key, IpmibRoute *row)
{
    const IpmibRoute only = route();
    const bool isIt = isRead() && std::memcmp(key, &only.key, sizeof *key) == 0;
    *row = only;
    return isIt ? 0 : -1;
}

int next(const IpmibRouteKey *key, IpmibRoute *row)
{
    const bool isBefore = key->version == 0 || (key->version == IPMIB_IPV4 && key->destination[0] < 10);
    *row = route();
    return isBefore && isRead() ? 0 : -1;
}

int match(uint32_t, const uint8_t *, IpmibRoute *)
{
    return -1;
}

} // namespace

void readRoutesAfter(unsigned long questions)
{
    awaited = questions;
}

const IpmibRouteHooks scriptedRoutes = {
    sizeof(IpmibRouteHooks), follow, limit, areRead, count, discards, find, next, match};

} // namespace ipmib::e2e
