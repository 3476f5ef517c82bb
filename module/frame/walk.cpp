// SPDX-License-Identifier: BSD-3-Clause
// The request walk that every table shares: how an index is read, how a found row becomes a reply.
#include "frame/walk.h"

#include "frame/gate.h"

#include <cstring>

namespace ipmib
{

namespace
{

std::uint32_t load32(const std::uint8_t *field)
{
    std::uint32_t value;
    std::memcpy(&value, field, sizeof value);
    return value;
}

} // namespace

IndexPart readIndexPart(MorRequest *request, std::uint32_t parameterId)
{
    MorPara *const part = MOR_GetParaFromMsgByMOR(request, 0, parameterId);
    return part == nullptr ? IndexPart{0, false} : IndexPart{MOR_GetData32(part), true};
}

IndexPart readIndexPartUnlessEmpty(MorRequest *request, std::uint32_t parameterId)
{
    MorPara *const part = MOR_GetParaFromMsgByMOR(request, 0, parameterId);
    if (part == nullptr || MOR_GetParaLen(part) == 0) {
        return {0, false};
    }
    return {MOR_GetData32(part), true};
}

std::uint32_t lookupError(std::uint32_t operation, std::uint32_t result)
{
    if (operation == OP_GET) {
        return ERR_NO_INSTANCE;
    }
    return result == RC_NO_MORE ? ERR_END_OF_TABLE : ERR_NEXT_FAILED;
}

void appendColumn(const Table &table, std::uint32_t place, const void *row, MorReply *reply)
{
    const Column &column = table.columns[place];
    const auto *const bytes = static_cast<const std::uint8_t *>(row);
    const std::uint8_t *const field = bytes + column.offset;
    const bool byValue = column.valueType <= VT_TIMETICKS;
    const std::uint32_t count =
        column.lengthField == Column::fixedLength ? column.length : load32(bytes + column.lengthField);
    MOR_AppendPara2Msg(reply, 0, table.parameterId(place), column.valueType,
                       byValue ? load32(field) : reinterpret_cast<std::uintptr_t>(field), count * column.unit);
}

void appendIndex(const Table &table, const void *row, MorReply *reply)
{
    for (std::uint32_t place = 0; place < table.indexCount; ++place) {
        appendColumn(table, place, row, reply);
    }
}

std::uint32_t answer(const Table &table, std::uint32_t operation, std::uint32_t lookupResult, const void *row,
                     MorRequest *request, MorReply *reply)
{
    if (lookupResult != 0) {
        return refuse(reply, lookupError(operation, lookupResult));
    }
    if (operation != OP_GET) {
        appendIndex(table, row, reply);
    }
    for (Parameters parameters(request); parameters; parameters.next()) {
        const std::uint32_t place = table.placeOf(parameters.id());
        if (place >= table.columnCount) {
            return refuse(reply, ERR_BAD_PARAM, parameters.position());
        }
        if (place >= table.indexCount) {
            appendColumn(table, place, row, reply);
        }
    }
    return 0;
}

} // namespace ipmib
