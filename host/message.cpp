// SPDX-License-Identifier: BSD-3-Clause
// The message layer's entry points, as a loaded module finds them in this process. Whatever a module passes, nothing
// here reads or writes outside the messages; a misuse is noted for the agent, which then refuses the reply.
#include "message.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

constexpr std::uint32_t done = 0;
constexpr std::uint32_t refused = 1;

// A process speaks with its modules on one thread.
const char *lastMisuse = nullptr;

std::uint32_t refuse(const char *misuse)
{
    lastMisuse = misuse;
    return refused;
}

std::uint32_t deliver(const MorRequest &request, std::uint32_t *parameterId)
{
    if (request.position >= request.parameters.size()) {
        return 0;
    }
    *parameterId = request.parameters[request.position].id;
    return 1;
}

void append(MorReply &reply, std::uint32_t id, std::uint32_t type, std::uint64_t number)
{
    reply.values.push_back({id, type, number, {}});
}

} // namespace

namespace ipmib::host
{

const char *takeMisuse()
{
    return std::exchange(lastMisuse, nullptr);
}

} // namespace ipmib::host

void MorRequest::begin(std::uint32_t tableId, std::uint32_t operationType)
{
    table = tableId;
    operation = operationType;
    parameters.clear();
    position = 0;
}

void MorRequest::addNumber(std::uint32_t id, std::uint32_t number)
{
    parameters.push_back({id, MorPara::Kind::number, number, {}});
}

void MorRequest::addOctets(std::uint32_t id, std::span<const std::uint8_t> bytes)
{
    parameters.push_back({id, MorPara::Kind::octets, 0, bytes});
}

void MorRequest::addWanted(std::uint32_t id)
{
    parameters.push_back({id, MorPara::Kind::wanted, 0, {}});
}

MorReply::MorReply(ipmib::host::ByteStore &byteStore) : store(byteStore)
{
    values.reserve(ipmib::host::maxReplyValues);
}

void MorReply::begin()
{
    values.clear();
    bytes = 0;
    error = 0;
    errorPosition = IPMIB_WHOLE_REQUEST;
}

uint32_t MOR_GetTableId(MorRequest *request)
{
    return request ? request->table : (refuse("asked for the table of no request"), 0);
}

uint32_t MOR_GetMsgOpType(MorRequest *request)
{
    return request ? request->operation : (refuse("asked for the operation of no request"), 0);
}

MorPara *MOR_GetParaFromMsgByMOR(MorRequest *request, uint32_t, uint32_t parameter_id)
{
    if (!request) {
        refuse("asked for a parameter of no request");
        return nullptr;
    }
    // A column that is wanted has no value, so as an index parameter it is absent.
    const auto found =
        std::find_if(request->parameters.begin(), request->parameters.end(), [parameter_id](const MorPara &parameter) {
            return parameter.id == parameter_id && parameter.kind != MorPara::Kind::wanted;
        });
    return found == request->parameters.end() ? nullptr : &*found;
}

uint32_t MOR_GetData32(MorPara *parameter)
{
    if (!parameter || parameter->kind != MorPara::Kind::number) {
        refuse("read a number from a parameter that holds none");
        return 0;
    }
    return parameter->number;
}

uint32_t MOR_GetParaLen(MorPara *parameter)
{
    if (!parameter) {
        refuse("asked for the length of no parameter");
        return 0;
    }
    return parameter->kind == MorPara::Kind::number ? sizeof parameter->number
                                                    : static_cast<uint32_t>(parameter->bytes.size());
}

uint32_t MOR_GetDataFromPara(MorPara *parameter, uint32_t capacity, void *buffer)
{
    if (!parameter || !buffer) {
        return refuse("copied a parameter's value from or to nowhere");
    }
    const bool isNumber = parameter->kind == MorPara::Kind::number;
    const void *bytes = isNumber ? static_cast<const void *>(&parameter->number) : parameter->bytes.data();
    const std::size_t size = std::min<std::size_t>(capacity, MOR_GetParaLen(parameter));
    if (size > 0) {
        std::memcpy(buffer, bytes, size);
    }
    return done;
}

uint32_t MOR_GetFirstParaFromMsg(MorRequest *request, uint32_t, uint32_t *parameter_id)
{
    if (!request || !parameter_id) {
        refuse("walked the parameters from or to nowhere");
        return 0;
    }
    request->position = 0;
    return deliver(*request, parameter_id);
}

uint32_t MOR_GetNextParaFromMsg(MorRequest *request, uint32_t, uint32_t *parameter_id)
{
    if (!request || !parameter_id) {
        refuse("walked the parameters from or to nowhere");
        return 0;
    }
    if (request->position < request->parameters.size()) {
        ++request->position;
    }
    return deliver(*request, parameter_id);
}

uint32_t MOR_AppendPara2Msg(MorReply *reply, uint32_t, uint32_t parameter_id, uint32_t value_type, uintptr_t value,
                            uint32_t length)
{
    using namespace ipmib::host;

    if (!reply) {
        return refuse("appended a value to no reply");
    }
    if (reply->values.size() >= maxReplyValues) {
        return refuse("appended too many values");
    }
    // NOLINTNEXTLINE(performance-no-int-to-ptr): some value types hold an address in the word
    const void *address = reinterpret_cast<const void *>(value);
    switch (value_type) {
    case VT_INTEGER:
    case VT_COUNTER32:
    case VT_UNSIGNED32:
    case VT_TIMETICKS:
        if (length != sizeof(uint32_t)) {
            return refuse("appended a number whose length is not 4");
        }
        append(*reply, parameter_id, value_type, static_cast<uint32_t>(value));
        return done;
    case VT_COUNTER64: {
        if (!address || length != sizeof(uint64_t)) {
            return refuse("appended a 64-bit counter without an address or with a length other than 8");
        }
        uint64_t number = 0;
        std::memcpy(&number, address, sizeof number);
        append(*reply, parameter_id, value_type, number);
        return done;
    }
    case VT_OID:
        if (length % sizeof(uint32_t) != 0) {
            return refuse("appended an identifier whose length is not a multiple of 4");
        }
        [[fallthrough]];
    case VT_OCTETS:
        if (length > maxOctets || (length > 0 && !address)) {
            return refuse("appended octets that are too long or lie nowhere");
        }
        if (length > maxReplyBytes - reply->bytes) {
            return refuse("appended more octets than a reply holds");
        }
        reply->bytes += length;
        reply->values.push_back({parameter_id, value_type, 0, reply->store.keep(address, length)});
        return done;
    default:
        return refuse("appended a value of an unknown type");
    }
}

uint32_t MOR_SetMsgError(MorReply *reply, uint32_t error_code, int32_t position)
{
    if (!reply) {
        return refuse("set an error on no reply");
    }
    reply->error = error_code;
    reply->errorPosition = position;
    return done;
}
