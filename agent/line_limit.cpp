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

// A word with a digit is a number, an address, or the name of one of many; so is an octet in hexadecimal.
bool isNumber(std::string_view word)
{
    constexpr std::size_t octet = 2;
    const auto is = [](int (*kind)(int)) { return [kind](unsigned char letter) { return kind(letter) != 0; }; };
    return std::ranges::any_of(word, is(std::isdigit)) ||
           (word.size() == octet && std::ranges::all_of(word, is(std::isxdigit)));
}

std::string kindOf(std::string_view line)
{
    std::string kind;
    while (!line.empty() && kind.size() < longestKind) {
        const auto end = std::ranges::find_if(line, [](unsigned char letter) { return std::isalnum(letter) == 0; });
        const std::string_view word = line.substr(0, static_cast<std::size_t>(end - line.begin()));
        if (word.empty()) {
            kind += line[0] == '\n' ? ' ' : line[0];
        } else if (!isNumber(word)) {
            kind += word;
        } else if (kind.ends_with("#.") || kind.ends_with("#:") || kind.ends_with("#-")) {
            kind.pop_back();
        } else {
            kind += '#';
        }
        line.remove_prefix(std::max<std::size_t>(word.size(), 1));
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
