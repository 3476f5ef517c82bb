// SPDX-License-Identifier: BSD-3-Clause
// Sends requests to the module and puts replies into words.
#include "request.h"

#include "call_log.h"
#include "message_layer.h"
#include "world.h"

#include <ostream>

namespace ipmib::scripted
{

Bytes bytesOf(const char *text)
{
    const FullAddressRecord record = address(0, text);
    return {record.address, record.address + sizeof record.address};
}

Bytes zoned(const char *text, std::uint32_t zone)
{
    Bytes bytes = bytesOf(text);
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<std::uint8_t>(zone >> shift));
    }
    return bytes;
}

Value integer(std::uint32_t column, std::int64_t number)
{
    return {column, VT_INTEGER, static_cast<std::uint32_t>(number), {}};
}

Value counter32(std::uint32_t column, std::uint32_t number)
{
    return {column, VT_COUNTER32, number, {}};
}

Value unsigned32(std::uint32_t column, std::uint32_t number)
{
    return {column, VT_UNSIGNED32, number, {}};
}

Value timeTicks(std::uint32_t column, std::uint32_t number)
{
    return {column, VT_TIMETICKS, number, {}};
}

Value counter64(std::uint32_t column, std::uint64_t number)
{
    return {column, VT_COUNTER64, number, {}};
}

Value octets(std::uint32_t column, const Bytes &bytes)
{
    return {column, VT_OCTETS, 0, {bytes.begin(), bytes.end()}};
}

Value objectId(std::uint32_t column, std::vector<std::uint32_t> subIds)
{
    return {column, VT_OID, 0, std::move(subIds)};
}

Reply answered(std::vector<Value> values)
{
    return {0, std::move(values), {}};
}

Reply refused(std::uint32_t code, std::int32_t position, std::vector<Value> values)
{
    return {code, std::move(values), {{code, position}}};
}

Reply refusedSilently(std::uint32_t code)
{
    return {code, {}, {}};
}

void PrintTo(const Reply &reply, std::ostream *out)
{
    *out << "result " << number(reply.result);
    for (const Value &value : reply.values) {
        *out << "\n  column " << value.column << " type " << value.type << ":";
        if (value.type == VT_OCTETS || value.type == VT_OID) {
            for (const std::uint32_t item : value.items) {
                *out << (value.type == VT_OID ? "." : " ") << item;
            }
        } else {
            *out << " " << value.number;
        }
    }
    for (const auto &[code, position] : reply.errors) {
        *out << "\n  error " << number(code) << " at " << position;
    }
}

namespace
{

Bytes machineBytes(std::uint32_t number)
{
    const auto *bytes = reinterpret_cast<const std::uint8_t *>(&number);
    return {bytes, bytes + sizeof number};
}

} // namespace

Request &Request::index(std::uint32_t column, std::uint32_t value)
{
    parameters_.push_back({ip_ParamId(table_, column), value, machineBytes(value)});
    return *this;
}

Request &Request::index(std::uint32_t column, Bytes value)
{
    parameters_.push_back({ip_ParamId(table_, column), 0, std::move(value)});
    return *this;
}

Request &Request::emptyIndex(std::uint32_t column)
{
    return index(column, Bytes{});
}

Request &Request::wantId(std::uint32_t parameterId)
{
    parameters_.push_back({parameterId, 0, {}});
    return *this;
}

namespace
{

template <typename Call>
Reply exchange(std::uint32_t table, std::uint32_t operation, const std::vector<Request::Parameter> &parameters,
               Call call)
{
    MorRequest request = {table, operation, {}};
    for (const Request::Parameter &parameter : parameters) {
        request.parameters.push_back({parameter});
    }
    MorReply reply = {table, {}};
    reply.reply.result = call(&request, &reply);
    return reply.reply;
}

} // namespace

Reply Request::sendTo(MorCallback callback) const
{
    return exchange(table_, operation_, parameters_, callback);
}

Reply Request::sendTo(Handler handler) const
{
    const auto call = [this, handler](MorRequest *request, MorReply *reply) {
        return handler(operation_, request, reply);
    };
    return exchange(table_, operation_, parameters_, call);
}

} // namespace ipmib::scripted
