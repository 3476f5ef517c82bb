// SPDX-License-Identifier: BSD-3-Clause
// How cells are made from a row's values.
#include "cell.h"

#include "session.h"
#include "text.h"

#include "support/printable.h"

#include <algorithm>

namespace ipmib::cli
{
namespace
{

template <class Make>
Cell ofValue(const TableReader &rows, std::size_t column, Make make)
{
    const host::Value *value = rows.value(column);
    return value == nullptr ? emptyCell() : make(*value);
}

} // namespace

Cell textCell(const std::string &text)
{
    const std::string shown = support::printable(text);
    return {shown, shown, {}};
}

Cell emptyCell()
{
    return {"-", nullptr, {}};
}

Cell interfaceCell(const TableReader &rows, std::size_t part)
{
    return textCell(rows.session().interfaceName(rows.key().number(part)));
}

Cell addressCell(const TableReader &rows, std::size_t part)
{
    return textCell(addressText(rows.session(), rows.key().octets(part)));
}

Cell indexLabelCell(const TableReader &rows, std::size_t part)
{
    return textCell(labelText(*rows.indexObject(part).pstSyntax, rows.key().number(part)));
}

Cell counterCell(const host::Value &value)
{
    const bool wide = value.type == host::ValueType::counter64;
    return {std::to_string(value.number), value.number, CounterValue{value.number, wide}};
}

Cell numberCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [](const host::Value &value) {
        return Cell{std::to_string(value.number), value.number, {}};
    });
}

Cell interfaceNumberCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [&rows](const host::Value &value) {
        return textCell(rows.session().interfaceName(static_cast<std::uint32_t>(value.number)));
    });
}

Cell counterCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [](const host::Value &value) { return counterCell(value); });
}

Cell labelCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [&](const host::Value &value) {
        return textCell(labelText(*rows.object(column).pstSyntax, value.number));
    });
}

Cell truthCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [](const host::Value &value) {
        const bool truth = value.number == 1;
        return Cell{truth ? "yes" : "no", truth, {}};
    });
}

Cell lifetimeCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [](const host::Value &value) {
        return Cell{lifetimeText(static_cast<std::uint32_t>(value.number)), value.number, {}};
    });
}

Cell millisecondsCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [](const host::Value &value) {
        return Cell{millisecondsText(value.number), value.number, {}};
    });
}

Cell agoCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [&rows](const host::Value &value) {
        constexpr std::uint64_t perSecond = 100;
        const std::uint64_t seconds = value.number / perSecond;
        const std::uint64_t now = std::max<std::uint64_t>(rows.session().uptime(), seconds);
        return Cell{durationText(now - seconds) + " ago", static_cast<double>(value.number) / perSecond, {}};
    });
}

} // namespace ipmib::cli
