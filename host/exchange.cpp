// SPDX-License-Identifier: BSD-3-Clause
// Builds requests and reads the state and the index of replies. The buffers are the same for every request.
#include "exchange.h"

#include <algorithm>

namespace ipmib::host
{

Outcome Exchange::get(const Table &table, const RowKey &key, std::span<const std::uint32_t> wanted)
{
    firstValue_ = 0;
    return send(table, OP_GET, &key, wanted);
}

Outcome Exchange::getNext(const Table &table, const RowKey *key, std::span<const std::uint32_t> wanted, RowKey &row)
{
    firstValue_ = table.index.size();
    const Outcome outcome = send(table, OP_GETNEXT, key, wanted);
    if (outcome == Outcome::answered && !readRow(table, row)) {
        problem_ = "the reply does not begin with the index of a row";
        return Outcome::unusable;
    }
    return outcome;
}

Outcome Exchange::send(const Table &table, std::uint32_t operation, const RowKey *key,
                       std::span<const std::uint32_t> wanted)
{
    request_.begin(table.id, operation);
    for (std::size_t i = 0; key && i < table.index.size(); ++i) {
        const IndexPart &part = table.index[i];
        if (part.isOctets) {
            request_.addOctets(part.parameter, key->octets(i));
        } else {
            request_.addNumber(part.parameter, key->number(i));
        }
    }
    for (const std::uint32_t parameter : wanted) {
        request_.addWanted(parameter);
    }
    reply_.begin();
    problem_ = nullptr;
    takeMisuse();
    ++count_;
    const std::uint32_t returned = callback_(&request_, &reply_);

    if (const char *misuse = takeMisuse()) {
        problem_ = misuse;
        return Outcome::unusable;
    }
    switch (returned != 0 ? returned : reply_.error) {
    case 0:
        return Outcome::answered;
    case ERR_END_OF_TABLE:
    case ERR_NEXT_FAILED:
    case ERR_NO_INSTANCE:
        return Outcome::noRow;
    case ERR_TABLE_UNKNOWN:
        problem_ = "the module does not know the table";
        return Outcome::unusable;
    case ERR_BAD_PARAM:
        problem_ = "the module refuses a column of the table, or the operation";
        return Outcome::unusable;
    default:
        problem_ = "the module answers with an error that has no meaning here";
        return Outcome::unusable;
    }
}

bool Exchange::readRow(const Table &table, RowKey &row)
{
    if (reply_.values.size() < table.index.size()) {
        return false;
    }
    for (std::size_t i = 0; i < table.index.size(); ++i) {
        const IndexPart &part = table.index[i];
        const ReplyValue &value = reply_.values[i];
        const std::uint64_t measure = part.isOctets ? value.bytes.size() : value.number;
        if (value.parameter != part.parameter || value.type != part.valueType || measure < part.low ||
            measure > part.high) {
            return false;
        }
        if (part.isOctets) {
            std::ranges::copy(value.bytes, row.resizeOctets(i, static_cast<std::uint32_t>(measure)).begin());
        } else {
            row.setNumber(i, static_cast<std::uint32_t>(measure));
        }
    }
    return true;
}

const ReplyValue *Exchange::value(std::uint32_t parameter, std::size_t place) const
{
    // A module answers in the order in which it was asked, but nothing obliges it to.
    const auto &values = reply_.values;
    if (firstValue_ + place < values.size() && values[firstValue_ + place].parameter == parameter) {
        return &values[firstValue_ + place];
    }
    const auto found = std::find_if(values.begin(), values.end(),
                                    [parameter](const ReplyValue &each) { return each.parameter == parameter; });
    return found == values.end() ? nullptr : &*found;
}

ReplyValue Exchange::valueOf(const IndexPart &part, const RowKey &key, std::size_t i)
{
    if (!part.isOctets) {
        return {part.parameter, part.valueType, key.number(i), {}};
    }
    const auto octets = key.octets(i);
    return {part.parameter, part.valueType, 0, store_.keep(octets.data(), octets.size())};
}

} // namespace ipmib::host
