// SPDX-License-Identifier: BSD-3-Clause
// The request walk that every table shares: how an index is read, how a found row becomes a reply.
//
// A table's handler reads its index, looks its row up, and hands the result to answer(). All that a table has of its
// own beside its lookups is the list of its columns: value type and place in the row record, index columns first.
#pragma once

#include <ipmib/message.h>

#include <cstddef>
#include <cstdint>

namespace ipmib
{

// One column: where the row record holds its value and how it is passed.
struct Column {
    static constexpr std::uint16_t fixedLength = 0xFFFF;

    std::uint16_t offset;
    std::uint8_t valueType;    // VT_*
    std::uint8_t unit;         // bytes of one element
    std::uint16_t lengthField; // offset of the u32 that counts the elements, or fixedLength
    std::uint16_t length;      // elements, when the length is fixed
};

// A number of 32 bits, passed by value.
constexpr Column number(std::uint8_t valueType, std::size_t offset)
{
    return {static_cast<std::uint16_t>(offset), valueType, 4, Column::fixedLength, 1};
}

// A 64-bit counter, passed by address.
constexpr Column counter64(std::size_t offset)
{
    return {static_cast<std::uint16_t>(offset), VT_COUNTER64, 8, Column::fixedLength, 1};
}

// Octets of a fixed length.
constexpr Column octets(std::size_t offset, std::size_t length)
{
    return {static_cast<std::uint16_t>(offset), VT_OCTETS, 1, Column::fixedLength, static_cast<std::uint16_t>(length)};
}

// Octets, and an identifier, of as many octets or sub-identifiers as another field of the row says.
constexpr Column octetsOf(std::size_t offset, std::size_t lengthField)
{
    return {static_cast<std::uint16_t>(offset), VT_OCTETS, 1, static_cast<std::uint16_t>(lengthField), 0};
}
constexpr Column identifierOf(std::size_t offset, std::size_t countField)
{
    return {static_cast<std::uint16_t>(offset), VT_OID, 4, static_cast<std::uint16_t>(countField), 0};
}

// A table's columns, numbered from 1 without a gap; the first of them are the index.
struct Table {
    std::uint32_t id;
    std::uint32_t indexCount;
    std::uint32_t columnCount;
    const Column *columns;

    std::uint32_t parameterId(std::uint32_t place) const { return ip_ParamId(id, place + 1); }
    // The place of a parameter's column in the list; columnCount or more for a parameter of another table.
    std::uint32_t placeOf(std::uint32_t parameter) const { return parameter - parameterId(0); }
};

// An index part of a request: 0 when it is absent.
struct IndexPart {
    std::uint32_t value;
    bool present;
};
IndexPart readIndexPart(MorRequest *request, std::uint32_t parameterId);

// The same where a part of length 0 counts as absent.
IndexPart readIndexPartUnlessEmpty(MorRequest *request, std::uint32_t parameterId);

// An index whose parts are counted as they are read: how much of it a request gave decides what is looked up.
struct CountedIndex {
    std::uint32_t parts = 0;

    std::uint32_t count(const IndexPart &part)
    {
        parts += part.present ? 1 : 0;
        return part.value;
    }
};

// The parameters of a request in the order in which it delivers them.
class Parameters
{
  public:
    explicit Parameters(MorRequest *request) : request_(request), more_(MOR_GetFirstParaFromMsg(request, 0, &id_)) {}

    explicit operator bool() const { return more_ != 0; }
    std::uint32_t id() const { return id_; }
    std::int32_t position() const { return position_; } // how many came before this one
    void next()
    {
        more_ = MOR_GetNextParaFromMsg(request_, 0, &id_);
        ++position_;
    }

  private:
    MorRequest *request_;
    std::uint32_t id_ = 0xFFFFFFFF;
    std::int32_t position_ = 0;
    std::uint32_t more_;
};

// The error of a lookup that did not find its row.
std::uint32_t lookupError(std::uint32_t operation, std::uint32_t result);

// Appends the column at a place of the list.
void appendColumn(const Table &table, std::uint32_t place, const void *row, MorReply *reply);

// Appends the row's index, as every get-next does first.
void appendIndex(const Table &table, const void *row, MorReply *reply);

// Turns a lookup's result into the reply: its error, or the index (for a get-next) and then the requested columns up to
// the first that is not of the table. Returns 0 or the error set.
std::uint32_t answer(const Table &table, std::uint32_t operation, std::uint32_t lookupResult, const void *row,
                     MorRequest *request, MorReply *reply);

} // namespace ipmib
