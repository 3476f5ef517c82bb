// SPDX-License-Identifier: BSD-3-Clause
// How cells are made from a row's values.
#include "cell.h"

#include "local_device.h"
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

Tone toneOfLabel(const std::string &label)
{
    constexpr std::string_view good[] = {"up", "preferred", "reachable"};
    constexpr std::string_view bad[] = {"down", "duplicate", "inaccessible", "incomplete", "invalid"};
    const auto isAmong = [&label](const auto &labels) { return std::ranges::find(labels, label) != std::end(labels); };
    return isAmong(good) ? Tone::good : isAmong(bad) ? Tone::bad : Tone::plain;
}

} // namespace

Cell textCell(const std::string &text, Tone tone)
{
    const std::string shown = support::printable(text);
    return {shown, shown, {}, tone};
}

Cell emptyCell()
{
    return {"-", nullptr, {}};
}

Cell interfaceCell(const TableReader &rows, std::size_t part)
{
    return textCell(rows.device().interfaceName(rows.key().number(part)), Tone::interface);
}

Cell addressCell(const TableReader &rows, std::size_t part)
{
    const auto octets = rows.key().octets(part);
    return textCell(addressText(rows.device(), octets), toneOfAddress(octets));
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
        return textCell(rows.device().interfaceName(static_cast<std::uint32_t>(value.number)), Tone::interface);
    });
}

Cell counterCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [](const host::Value &value) { return counterCell(value); });
}

Cell labelCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [&](const host::Value &value) {
        const std::string label = labelText(*rows.object(column).pstSyntax, value.number);
        return textCell(label, toneOfLabel(label));
    });
}

Cell truthCell(const TableReader &rows, std::size_t column)
{
    return ofValue(rows, column, [](const host::Value &value) {
        const bool truth = value.number == 1;
        return Cell{truth ? "yes" : "no", truth, {}};
    });
}

Cell lifetimeCell(const TableReader &rows, std::size_t column, std::uint32_t endless)
{
    return ofValue(rows, column, [endless](const host::Value &value) {
        return value.number == endless ? Cell{"forever", nullptr, {}}
                                       : Cell{durationText(value.number), value.number, {}};
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
        const std::uint64_t now = std::max<std::uint64_t>(rows.device().uptime(), seconds);
        Cell cell{durationText(now - seconds) + " ago", static_cast<double>(value.number) / perSecond, {}};
        cell.age = now - seconds;
        return cell;
    });
}

} // namespace ipmib::cli
