// SPDX-License-Identifier: BSD-3-Clause
// A message layer that hands out what the fuzzer wrote, and holds the module to the conventions of messages.
#include "fuzzed_message.h"

#include <ipmib/mib_tree.h>

#include <algorithm>

using ipmib::fuzz::require;

namespace
{

std::vector<std::uint8_t> readValue(ipmib::fuzz::Bytes &bytes)
{
    static constexpr std::uint32_t lengths[] = {0, 1, 4, 15, 16, 17, 19, 20, 21, 511, 512, 513, 700};
    const std::uint32_t length = lengths[bytes.below(std::size(lengths))];
    if (length != 16 && length != 20) {
        return bytes.octets(length);
    }
    std::vector<std::uint8_t> value(length);
    bytes.address(value.data());
    if (length == 20) {
        value[19] = bytes.byte();
    }
    return value;
}

// Reads what an address-valued append points at, so that a sanitizer sees what lies outside of the module's rows.
void readAll(const void *first, std::size_t size)
{
    const std::vector<std::uint8_t> copy(static_cast<const std::uint8_t *>(first),
                                         static_cast<const std::uint8_t *>(first) + size);
    require(copy.size() == size, "the value can be read");
}

} // namespace

MorRequest MorRequest::read(ipmib::fuzz::Bytes &bytes)
{
    constexpr std::uint32_t columns = 34; // more than any table has
    constexpr std::uint8_t foreign = 0xF8;

    MorRequest request{bytes.below(14), bytes.below(12), {}};
    for (std::uint32_t count = bytes.below(10); count > 0; --count) {
        const std::uint8_t choice = bytes.byte();
        MorPara parameter{};
        parameter.id = choice < foreign ? ip_ParamId(request.table, choice % columns) : bytes.number();
        parameter.number = bytes.number();
        parameter.bytes = readValue(bytes);
        request.parameters.push_back(std::move(parameter));
    }
    return request;
}

std::uint32_t SNMP_RegisterMibTree(const char *, std::uint32_t, std::uint32_t, const MibTreeNode *)
{
    return 0;
}
std::uint32_t SNMP_DeregMibTree(const char *, std::uint32_t, std::uint32_t, const MibTreeNode *)
{
    return 0;
}
std::uint32_t MOR_RegCallBack(std::uint32_t, MorCallback)
{
    return 0;
}
std::uint32_t MOR_DeregCallBack(std::uint32_t)
{
    return 0;
}

std::uint32_t MOR_GetTableId(MorRequest *request)
{
    return request->table;
}
std::uint32_t MOR_GetMsgOpType(MorRequest *request)
{
    return request->operation;
}

MorPara *MOR_GetParaFromMsgByMOR(MorRequest *request, std::uint32_t, std::uint32_t parameter_id)
{
    const auto found = std::find_if(request->parameters.begin(), request->parameters.end(),
                                    [parameter_id](const MorPara &each) { return each.id == parameter_id; });
    return found == request->parameters.end() ? nullptr : &*found;
}

std::uint32_t MOR_GetData32(MorPara *parameter)
{
    return parameter->number;
}
std::uint32_t MOR_GetParaLen(MorPara *parameter)
{
    return static_cast<std::uint32_t>(parameter->bytes.size());
}
std::uint32_t MOR_GetDataFromPara(MorPara *parameter, std::uint32_t capacity, void *buffer)
{
    require(capacity == 512, "the buffer has 512 bytes");
    std::memset(buffer, 0xE7, capacity); // what the value does not reach holds anything
    std::copy_n(parameter->bytes.begin(), std::min<std::size_t>(parameter->bytes.size(), capacity),
                static_cast<std::uint8_t *>(buffer));
    return 0;
}

std::uint32_t MOR_GetFirstParaFromMsg(MorRequest *request, std::uint32_t zero, std::uint32_t *parameter_id)
{
    request->place = static_cast<std::size_t>(-1);
    return MOR_GetNextParaFromMsg(request, zero, parameter_id);
}
std::uint32_t MOR_GetNextParaFromMsg(MorRequest *request, std::uint32_t, std::uint32_t *parameter_id)
{
    if (++request->place >= request->parameters.size()) {
        return 0;
    }
    *parameter_id = request->parameters[request->place].id;
    return 1;
}

std::uint32_t MOR_AppendPara2Msg(MorReply *reply, std::uint32_t, std::uint32_t parameter_id, std::uint32_t value_type,
                                 std::uintptr_t value, std::uint32_t length)
{
    require(parameter_id > ip_ParamId(reply->table, 0) && parameter_id < ip_ParamId(reply->table, 34),
            "an appended value is of the request's table");
    switch (value_type) {
    case VT_OCTETS:
        require(length <= 20, "no column has more than 20 octets");
        break;
    case VT_OID:
        require(length % 4 == 0 && length <= 4 * 128, "an identifier has whole sub-identifiers, and at most 128");
        break;
    case VT_COUNTER64:
        require(length == 8, "a 64-bit counter has 8 bytes");
        break;
    default:
        require(value_type <= VT_TIMETICKS, "the value type is known");
        require(length == 4 && value <= UINT32_MAX, "a number has 32 bits");
        return 0;
    }
    readAll(reinterpret_cast<const void *>(value), length);
    return 0;
}

std::uint32_t MOR_SetMsgError(MorReply *reply, std::uint32_t error_code, std::int32_t position)
{
    require(position >= IPMIB_WHOLE_REQUEST && position <= static_cast<std::int32_t>(reply->parameters),
            "an error concerns the request, or stands at one of its parameters or behind them");
    reply->error = error_code;
    return 0;
}
