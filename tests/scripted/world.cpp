// SPDX-License-Identifier: BSD-3-Clause
// Holds the world in force and builds its records.
#include "world.h"

#include "state.h"

#include <arpa/inet.h>

#include <cstdlib>

namespace ipmib::scripted
{

State &state()
{
    static State *const theState = new State;
    return *theState;
}

World &world()
{
    return state().world;
}

void newWorld()
{
    state() = State{};
}

namespace
{

void setAddress(std::uint8_t *bytes, const char *text)
{
    if (inet_pton(AF_INET6, text, bytes) != 1) {
        std::abort(); // the test is misspelt
    }
}

} // namespace

NeighbourEntry neighbour(std::uint32_t ifIndex, const char *address)
{
    NeighbourEntry entry = {};
    entry.if_index = ipmib_be32(ifIndex);
    setAddress(entry.address, address);
    return entry;
}

FullPrefixRecord prefix(std::uint32_t ifIndex, const char *address, std::uint32_t length)
{
    FullPrefixRecord record = {};
    record.if_index = ipmib_be32(ifIndex);
    setAddress(record.prefix, address);
    record.length = ipmib_be32(length);
    return record;
}

FullAddressRecord address(std::uint32_t ifIndex, const char *address)
{
    FullAddressRecord record = {};
    record.if_index = ifIndex;
    setAddress(record.address, address);
    return record;
}

GatewayRecord gateway(std::uint32_t ifIndex, const char *address)
{
    GatewayRecord record = {};
    record.if_index = ipmib_be32(ifIndex);
    setAddress(record.address, address);
    return record;
}

} // namespace ipmib::scripted
