// SPDX-License-Identifier: BSD-3-Clause
// What an SNMP agent would answer in a network namespace: the platform, the module and the resolver, without the wire.
#pragma once

#include "host/resolver.h"
#include "test_platform.h"

#include <map>
#include <string>
#include <vector>

namespace ipmib::live
{

using Identifier = std::vector<host::SubId>;

// One value, with what it points to.
struct Cell {
    host::ValueType type = host::ValueType::integer32;
    std::uint64_t number = 0;
    std::vector<std::uint8_t> octets;
    Identifier objectId;
};

// The rows of a table by column number and index, as an SNMP walk delivers them.
using Table = std::map<host::SubId, std::map<Identifier, Cell>>;

class LiveAgent
{
  public:
    // The calling thread stays in the namespace as long as this lives.
    explicit LiveAgent(const netns::Namespace &space);

    platform::PlatformInside &platform() { return platform_; }
    host::Resolver &resolver() { return resolver_; }

    // Each of these is one packet, or one for each row, with all that a packet's beginning means to the platform.
    Cell get(const Identifier &instance);
    // The instance that follows within the region, which `name` becomes; false at the end of the region.
    bool next(Identifier &name, const Identifier &region, Cell &cell);
    // Walks over the entry of a table; a walk that does not ascend is a test failure, and ends.
    Table walk(const Identifier &entry);
    // The same with these columns side by side, all of a row in one packet.
    Table walk(const Identifier &entry, const std::vector<host::SubId> &columns);

  private:
    platform::PlatformInside platform_;
    host::Resolver resolver_;
};

} // namespace ipmib::live
