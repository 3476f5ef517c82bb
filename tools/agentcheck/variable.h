// SPDX-License-Identifier: BSD-3-Clause
// Variables as they came over the wire, whatever their objects declare.
#pragma once

#include "host/oid.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace ipmib::agentcheck
{

using Name = std::vector<host::SubId>;

struct Ascending {
    bool operator()(const Name &left, const Name &right) const { return std::is_lt(host::compare(left, right)); }
};

// The tags of BER.
enum class Tag : std::uint8_t {
    integer = 0x02,
    octets = 0x04,
    null = 0x05,
    objectId = 0x06,
    ipAddress = 0x40,
    counter32 = 0x41,
    unsigned32 = 0x42, // and Gauge32
    timeTicks = 0x43,
    counter64 = 0x46,
    noSuchObject = 0x80,
    noSuchInstance = 0x81,
    endOfMibView = 0x82,
};

struct Value {
    Tag tag = Tag::null;
    std::uint64_t number = 0; // a negative integer as its 32-bit two's complement
    std::vector<std::uint8_t> octets;
    Name objectId;

    bool operator==(const Value &) const = default;
    bool isException() const { return tag >= Tag::noSuchObject && tag <= Tag::endOfMibView; }
};

struct Variable {
    Name name;
    Value value;
};

using Values = std::map<Name, Value, Ascending>;

// "Gauge32", "noSuchInstance"
std::string textOf(Tag tag);
// "Integer32 5", "00 1b 44", "1.3.6"
std::string textOf(const Value &value);

} // namespace ipmib::agentcheck
