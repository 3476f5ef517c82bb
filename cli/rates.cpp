// SPDX-License-Identifier: BSD-3-Clause
// How fast counters grow between two looks at them.
#include "rates.h"

#include "text.h"

#include <cmath>

namespace ipmib::cli
{
namespace
{

std::string nameOf(const Row &row)
{
    std::string name;
    for (const Cell &cell : row) {
        name += cell.counter ? "" : cell.text + '\0';
    }
    return name;
}

Cell rateCell(const std::optional<CounterValue> &before, const CounterValue &now, double seconds)
{
    const auto grown = before ? growth(*before, now) : std::nullopt;
    if (!grown) {
        return emptyCell();
    }
    constexpr double thousand = 1'000; // programs are given three decimals
    const double rate = static_cast<double>(*grown) / seconds;
    return {rateText(rate), std::round(rate * thousand) / thousand, {}};
}

} // namespace

std::optional<std::uint64_t> growth(const CounterValue &before, const CounterValue &now)
{
    if (now.number >= before.number) {
        return now.number - before.number;
    }
    return now.wide ? std::nullopt
                    : std::optional<std::uint64_t>(static_cast<std::uint32_t>(now.number - before.number));
}

std::vector<Row> Rates::update(std::vector<Row> rows, double seconds)
{
    std::map<std::string, Row> known;
    for (Row &row : rows) {
        const Row counted = row;
        const std::string name = nameOf(row);
        const auto before = before_.find(name);
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (row[i].counter) {
                row[i] = rateCell(before == before_.end() ? std::nullopt : before->second[i].counter, *row[i].counter,
                                  seconds);
            }
        }
        known.emplace(name, counted);
    }
    before_ = std::move(known);
    return rows;
}

} // namespace ipmib::cli
