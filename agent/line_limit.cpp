// SPDX-License-Identifier: BSD-3-Clause
// A kind is named by its lines' common text, with # for what is a number in them.

#include "line_limit.h"

#include <algorithm>
#include <cctype>

namespace ipmib::agent
{

namespace
{

constexpr std::size_t longestKind = 100;

// A number, also one with separators, an address or an identifier, begins with a digit, and goes on with hexadecimal
// digits and what separates them.
std::string kindOf(std::string_view line)
{
    std::string kind;
    for (std::size_t i = 0; i < line.size() && kind.size() < longestKind; ++i) {
        if (std::isdigit(static_cast<unsigned char>(line[i])) == 0) {
            kind += line[i] == '\n' ? ' ' : line[i];
            continue;
        }
        const auto isPart = [](unsigned char letter) {
            return std::isxdigit(letter) != 0 || letter == '.' || letter == ':' || letter == 'x';
        };
        while (i + 1 < line.size() && isPart(static_cast<unsigned char>(line[i + 1]))) {
            ++i;
        }
        kind += '#';
    }
    kind.erase(kind.find_last_not_of(' ') + 1);
    return kind;
}

} // namespace

bool LineLimit::admits(std::string_view line, Clock::time_point now)
{
    if (!begin_) {
        begin_ = now;
    }
    const std::string name = kindOf(line);
    // Words of somebody's choice make kinds without end; they share what is left of the last one.
    const bool isNew = kinds_.find(name) == kinds_.end();
    Kind &kind = kinds_[isNew && kinds_.size() >= mostOfAllKinds ? "other lines" : name];
    if (kind.written < mostOfOneKind && written_ < mostOfAllKinds) {
        ++kind.written;
        ++written_;
        return true;
    }
    ++kind.leftOut;
    ++leftOut_;
    return false;
}

std::vector<std::string> LineLimit::takeReport(Clock::time_point now)
{
    std::vector<std::string> report;
    if (!begin_ || now - *begin_ < period) {
        return report;
    }
    for (const auto &[name, kind] : kinds_) {
        if (kind.leftOut != 0) {
            report.push_back("left out " + std::to_string(kind.leftOut) + " more in a minute of: " + name);
        }
    }
    *this = LineLimit();
    return report;
}

} // namespace ipmib::agent
