// SPDX-License-Identifier: BSD-3-Clause
// Rows that somebody expects a platform to have.
#include "expectation.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <vector>

namespace ipmib::portcheck
{

namespace
{

struct Row {
    std::string kind;
    std::map<std::string, std::string> values;
    std::string line;
};

Row rowOf(const std::string &line)
{
    std::istringstream words(line);
    Row row;
    words >> row.kind;
    row.line = line;
    for (std::string word; words >> word;) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) {
            throw std::runtime_error("\"" + line + "\" is no row: " + word + " is not NAME=VALUE");
        }
        row.values[word.substr(0, equals)] = word.substr(equals + 1);
    }
    return row;
}

// "" when the row has every value that is expected.
std::string differenceOf(const Row &expected, const Row &row)
{
    std::string text;
    for (const auto &[name, value] : expected.values) {
        const auto found = row.values.find(name);
        if (found == row.values.end() || found->second != value) {
            text += (text.empty() ? "" : ", ") + name + " is " +
                    (found == row.values.end() ? "not known" : found->second) + ", not " + value;
        }
    }
    return text;
}

std::size_t agreementOf(const Row &expected, const Row &row)
{
    return static_cast<std::size_t>(std::count_if(expected.values.begin(), expected.values.end(), [&](const auto &one) {
        const auto found = row.values.find(one.first);
        return found != row.values.end() && found->second == one.second;
    }));
}

// Pairs each expected row with the row that has most of its values; what is left over on either side is told.
class Comparison
{
  public:
    Comparison(Report &report, std::vector<Row> expected) : report_(report), expected_(std::move(expected))
    {
        std::set<std::string> kinds;
        for (const Row &row : expected_) {
            kinds.insert(row.kind);
        }
        for (const std::string &line : report.rows) {
            Row row = rowOf(line);
            if (kinds.count(row.kind) != 0) {
                rows_.push_back(std::move(row));
            }
        }
    }

    void make()
    {
        takeEqual();
        for (const Row &wanted : expected_) {
            const auto best = std::max_element(rows_.begin(), rows_.end(), [&](const Row &left, const Row &right) {
                return likenessOf(wanted, left) < likenessOf(wanted, right);
            });
            if (best == rows_.end() || likenessOf(wanted, *best) == 0) {
                tell(wanted.kind, "there is no row " + wanted.line);
            } else {
                tell(wanted.kind, differenceOf(wanted, *best) + ": " + best->line);
                rows_.erase(best);
            }
        }
        for (const Row &row : rows_) {
            tell(row.kind, "nobody expects " + row.line);
        }
    }

  private:
    // Rows of which at least half of the values are right are taken for the row that is expected.
    static std::size_t likenessOf(const Row &wanted, const Row &row)
    {
        const std::size_t agreement = agreementOf(wanted, row);
        return row.kind == wanted.kind && agreement * 2 >= wanted.values.size() ? agreement : 0;
    }

    void takeEqual()
    {
        std::vector<Row> different;
        for (Row &wanted : expected_) {
            const auto equal = std::find_if(rows_.begin(), rows_.end(), [&](const Row &row) {
                return row.kind == wanted.kind && differenceOf(wanted, row).empty();
            });
            if (equal == rows_.end()) {
                different.push_back(std::move(wanted));
            } else {
                rows_.erase(equal);
            }
        }
        expected_ = std::move(different);
    }

    void tell(const std::string &kind, std::string seen)
    {
        report_.broken.push_back({Promise::asExpected, kind, std::move(seen)});
    }

    Report &report_;
    std::vector<Row> expected_;
    std::vector<Row> rows_;
};

} // namespace

std::string expectationOf(const Report &report)
{
    std::string text =
        "# Rows of a platform, for ipmib-portcheck --expect. A value that moves (counters, times) is compared like\n"
        "# any other: take it out of its line, or the line out of the file. A kind of which no line is left is not\n"
        "# compared at all.\n";
    for (const std::string &row : report.rows) {
        text += row + "\n";
    }
    return text;
}

void compareRows(Report &report, const std::string &file)
{
    std::vector<Row> expected;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) {
        if (line.find_first_not_of(" \t\r") != std::string::npos && line[0] != '#') {
            expected.push_back(rowOf(line));
        }
    }
    Comparison(report, std::move(expected)).make();
}

} // namespace ipmib::portcheck
