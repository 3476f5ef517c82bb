// SPDX-License-Identifier: BSD-3-Clause
// The two messages behind the MOR_* handles: the request that a module reads and the reply that it fills.
#pragma once

#include "byte_store.h"

#include <ipmib/message.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ipmib::host
{

// One value of a reply. Octets and sub-identifiers lie in the reply's store, sub-identifiers in machine order.
struct ReplyValue {
    std::uint32_t parameter;
    std::uint32_t type;                  // VT_*
    std::uint64_t number;                // VT_INTEGER to VT_TIMETICKS, VT_COUNTER64
    std::span<const std::uint8_t> bytes; // VT_OCTETS, VT_OID
};

// What a module may not exceed; a reply that tries is refused as a whole.
inline constexpr std::size_t maxReplyValues = 512;
inline constexpr std::uint32_t maxOctets = 65535;
inline constexpr std::size_t maxReplyBytes = 262'144;

// What the module did wrong with the message layer since the last call, or null. The module is not told: it examines no
// result, so the agent has to.
const char *takeMisuse();

} // namespace ipmib::host

// A parameter of a request: an index value, or a wanted column, which has no value.
struct MorPara {
    enum class Kind : std::uint8_t { wanted, number, octets };

    std::uint32_t id;
    Kind kind;
    std::uint32_t number;                // a number's value
    std::span<const std::uint8_t> bytes; // octets; they stay the caller's
};

struct MorRequest {
    std::uint32_t table = 0;
    std::uint32_t operation = 0;
    std::vector<MorPara> parameters; // keeps its capacity from request to request
    std::size_t position = 0;        // the parameter that the module was given last

    void begin(std::uint32_t tableId, std::uint32_t operationType);
    void addNumber(std::uint32_t id, std::uint32_t number);
    void addOctets(std::uint32_t id, std::span<const std::uint8_t> bytes);
    void addWanted(std::uint32_t id);
};

struct MorReply {
    explicit MorReply(ipmib::host::ByteStore &byteStore);

    ipmib::host::ByteStore &store;
    std::vector<ipmib::host::ReplyValue> values; // in the order in which the module appended them
    std::size_t bytes = 0;                       // of all octets and identifiers
    std::uint32_t error = 0;
    std::int32_t errorPosition = IPMIB_WHOLE_REQUEST;

    void begin();
};
