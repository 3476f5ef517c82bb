// SPDX-License-Identifier: BSD-3-Clause
// Requests as a test writes them, and replies in a form that compares and prints.
//
//     EXPECT_EQ(get(10).index(1, 2).want(2).send(), answered({counter32(2, 77)}));
//
// Parameters are named by their column number in the table that the request is for.
#pragma once

#include <ipmib/message.h>

#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace ipmib::scripted
{

using Bytes = std::vector<std::uint8_t>;

// The 16 bytes of an address, and the 20 bytes of one with its zone.
Bytes bytesOf(const char *address);
Bytes zoned(const char *address, std::uint32_t zone);

// One appended value.
struct Value {
    std::uint32_t column;
    std::uint32_t type;
    std::uint64_t number;             // value types 0 to 3 and 8
    std::vector<std::uint32_t> items; // octets or sub-identifiers

    bool operator==(const Value &) const = default;
};

Value integer(std::uint32_t column, std::int64_t number);
Value counter32(std::uint32_t column, std::uint32_t number);
Value unsigned32(std::uint32_t column, std::uint32_t number);
Value timeTicks(std::uint32_t column, std::uint32_t number);
Value counter64(std::uint32_t column, std::uint64_t number);
Value octets(std::uint32_t column, const Bytes &bytes);
Value objectId(std::uint32_t column, std::vector<std::uint32_t> subIds);

struct Reply {
    std::uint32_t result = 0;
    std::vector<Value> values;
    std::vector<std::pair<std::uint32_t, std::int32_t>> errors; // code and position, as often as one was set

    bool operator==(const Reply &) const = default;
};

void PrintTo(const Reply &reply, std::ostream *out);

// Success with these values.
Reply answered(std::vector<Value> values = {});
// An error, returned and set once; values that were appended before it stay.
Reply refused(std::uint32_t code, std::int32_t position = IPMIB_WHOLE_REQUEST, std::vector<Value> values = {});
// An error that is returned and not set.
Reply refusedSilently(std::uint32_t code);

using Handler = std::uint32_t (*)(std::uint32_t operation, MorRequest *request, MorReply *reply);

class Request
{
  public:
    Request(std::uint32_t table, std::uint32_t operation) : table_(table), operation_(operation) {}

    // An index parameter with its value, or present without one.
    Request &index(std::uint32_t column, std::uint32_t number);
    Request &index(std::uint32_t column, Bytes value);
    Request &emptyIndex(std::uint32_t column);

    // Columns to be read.
    template <typename... Columns>
    Request &want(Columns... columns)
    {
        (wantId(ip_ParamId(table_, static_cast<std::uint32_t>(columns))), ...);
        return *this;
    }
    // Any parameter id.
    Request &wantId(std::uint32_t parameterId);

    // Through the callback of the module that is linked in, through one handler of an exported family, or through the
    // callback of a module that was loaded.
    Reply send() const;
    Reply sendTo(Handler handler) const;
    Reply sendTo(MorCallback callback) const;

    struct Parameter {
        std::uint32_t id;
        std::uint32_t number;
        Bytes value;
    };

  private:
    std::uint32_t table_;
    std::uint32_t operation_;
    std::vector<Parameter> parameters_;
};

inline Request get(std::uint32_t table)
{
    return {table, OP_GET};
}
inline Request getNext(std::uint32_t table)
{
    return {table, OP_GETNEXT};
}

} // namespace ipmib::scripted
