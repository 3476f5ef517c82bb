// SPDX-License-Identifier: BSD-3-Clause
// One cell of a listing, for people and for programs, and how cells are made from a row's values.
#pragma once

#include "colour.h"
#include "table_reader.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace ipmib::cli
{

using Json = nlohmann::ordered_json;

// A number that only grows, until it wraps.
struct CounterValue {
    std::uint64_t number;
    bool wide; // 64 bits
};

struct Cell {
    std::string text;
    Json json;
    std::optional<CounterValue> counter;
    Tone tone = Tone::plain;
    Json age = nullptr; // of a time: how many seconds ago it was
};

using Row = std::vector<Cell>;
using Sink = std::function<void(Row)>;

// Of any text: what is not printable in it is escaped.
Cell textCell(const std::string &text, Tone tone = Tone::plain);
// What a row has no value for.
Cell emptyCell();
// From a part of the index.
Cell interfaceCell(const TableReader &rows, std::size_t part);
Cell addressCell(const TableReader &rows, std::size_t part);
Cell indexLabelCell(const TableReader &rows, std::size_t part);
Cell counterCell(const host::Value &value);
// From a column; empty when it has no value.
Cell numberCell(const TableReader &rows, std::size_t column);
Cell interfaceNumberCell(const TableReader &rows, std::size_t column);
Cell counterCell(const TableReader &rows, std::size_t column);
Cell labelCell(const TableReader &rows, std::size_t column);
Cell truthCell(const TableReader &rows, std::size_t column);
// Seconds that are left. The greatest number of the object says that there is no end: "forever", null for programs.
Cell lifetimeCell(const TableReader &rows, std::size_t column, std::uint32_t endless = UINT32_MAX);
Cell millisecondsCell(const TableReader &rows, std::size_t column);
// Hundredths of a second since boot: how long ago that is.
Cell agoCell(const TableReader &rows, std::size_t column);

} // namespace ipmib::cli
