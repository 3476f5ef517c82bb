// SPDX-License-Identifier: BSD-3-Clause
// Which lines of a walk belong to one variable.
#include "support/walk/walk_text.h"

#include "support/walk/snmprec.h"

#include <algorithm>

namespace ipmib::support
{
namespace
{

using Identifier = std::vector<std::uint32_t>;

constexpr std::string_view equals = " = ";

// Columns of link-layer addresses: a display hint prints them as "0:1a:2b:3c:4d:5e".
const Identifier linkLayerColumns[] = {
    {1, 3, 6, 1, 2, 1, 2, 2, 1, 6},     {1, 3, 6, 1, 2, 1, 3, 1, 1, 2}, {1, 3, 6, 1, 2, 1, 4, 22, 1, 2},
    {1, 3, 6, 1, 2, 1, 4, 35, 1, 4},    {1, 3, 6, 1, 2, 1, 17, 1, 1},   {1, 3, 6, 1, 2, 1, 17, 4, 3, 1, 1},
    {1, 3, 6, 1, 2, 1, 17, 7, 1, 2, 2},
};

class Lines
{
  public:
    explicit Lines(std::string_view text) : text_(text) {}

    bool atEnd() const { return at_ == text_.size(); }
    std::size_t number() const { return number_; }
    std::string_view peek() const { return text_.substr(at_, text_.find('\n', at_) - at_); }
    std::string_view take()
    {
        const std::string_view line = peek();
        at_ = std::min(text_.size(), at_ + line.size() + 1);
        ++number_;
        return line;
    }

  private:
    std::string_view text_;
    std::size_t at_ = 0;
    std::size_t number_ = 0; // of the line that was taken last
};

bool isSnmprec(std::string_view line)
{
    const std::size_t end = line.find_first_not_of("0123456789.");
    return end != 0 && end != std::string_view::npos && line[end] == '|';
}

// A line that begins with a numeric identifier and what stands behind one.
bool beginsVariable(std::string_view line)
{
    const std::size_t end = line.find(equals);
    return isSnmprec(line) || (end != std::string_view::npos && parseIdentifier(line.substr(0, end)).has_value());
}

std::optional<std::size_t> openingQuote(std::string_view value)
{
    constexpr std::string_view string = "STRING: \"";
    const std::size_t place = value.starts_with("Wrong Type") ? value.find(string) : 0;
    if (place != std::string_view::npos && value.substr(place).starts_with(string)) {
        return place + string.size() - 1;
    }
    return value.starts_with('"') ? std::optional<std::size_t>(0) : std::nullopt;
}

// Whether a text in quotes ends; a quote inside has a backslash in front.
bool isClosed(std::string_view text, std::size_t opened)
{
    for (std::size_t i = opened + 1; i < text.size(); ++i) {
        if (text[i] == '\\') {
            ++i;
        } else if (text[i] == '"') {
            return true;
        }
    }
    return false;
}

// Strings of digits, and those that a display hint prints without quotes.
bool mayGoOn(std::string_view value)
{
    return std::ranges::any_of(std::initializer_list<std::string_view>{"STRING:", "BITS:", "OPAQUE:"},
                               [value](std::string_view type) { return value.find(type) != std::string_view::npos; });
}

// The value with the lines that it goes on in.
std::string takeValue(std::string_view first, Lines &lines)
{
    std::string value(first);
    if (const auto opened = openingQuote(value)) {
        while (!isClosed(value, *opened)) {
            if (lines.atEnd()) {
                throw WalkError(quotedStart(value) + " has no quote at its end");
            }
            value += '\n';
            value += lines.take();
        }
    } else {
        while (mayGoOn(value) && !lines.atEnd() && !beginsVariable(lines.peek())) {
            value += '\n';
            value += lines.take();
        }
        value.erase(value.find_last_not_of("\r\n") + 1);
    }
    return value;
}

// "0:1a:2b"
std::optional<std::string> parseColons(std::string_view text)
{
    std::string octets;
    while (!text.empty()) {
        const std::size_t colon = text.find(':');
        const std::string_view digits = text.substr(0, colon);
        const auto octet = parseHexDigits((digits.size() == 1 ? "0" : "") + std::string(digits));
        if (!octet || octet->size() != 1) {
            return std::nullopt;
        }
        octets += *octet;
        text.remove_prefix(colon == std::string_view::npos ? text.size() : colon + 1);
    }
    return octets;
}

void takeVariable(std::string_view line, Lines &lines, Walk &walk)
{
    const std::size_t end = line.find(equals);
    const std::size_t number = lines.number();
    const auto name = parseIdentifier(line.substr(0, end));
    if (end == std::string_view::npos || !name) {
        throw WalkError(quotedStart(line) + " does not begin with a numeric identifier and \" = \", as snmpwalk -On "
                                            "prints them");
    }
    const std::string value = takeValue(line.substr(end + equals.size()), lines);
    bool isHinted = false;
    auto object = parseWalkValue(value, isHinted);
    if (!object && value.starts_with("No more variables left ")) {
        return; // the end of the walk
    }
    if (!object) {
        walk.leftOut.push_back("line " + std::to_string(number) + ": " + identifierText(*name) + " = " + value);
        return;
    }
    object->name = *name;
    if (isHinted) {
        const bool isLinkLayer = std::ranges::any_of(
            linkLayerColumns, [&](const Identifier &column) { return beginsWith(object->name, column); });
        const auto octets = isLinkLayer ? parseColons(object->octets) : std::nullopt;
        object->octets = octets.value_or(object->octets);
        walk.hinted += octets ? 0 : 1;
    }
    walk.objects.push_back(std::move(*object));
}

void sort(Walk &walk)
{
    auto &objects = walk.objects;
    std::ranges::stable_sort(objects, isInFront, &RecordedObject::name);
    const auto haveOneName = [](const RecordedObject &left, const RecordedObject &right) {
        return left.name == right.name;
    };
    for (auto twice = std::ranges::adjacent_find(objects, haveOneName); twice != objects.end();
         twice = std::adjacent_find(twice + 1, objects.end(), haveOneName)) {
        walk.leftOut.push_back("another value of " + identifierText(twice->name));
    }
    objects.erase(std::unique(objects.begin(), objects.end(), haveOneName), objects.end());
}

} // namespace

Walk parseWalk(std::string_view text)
{
    Walk walk;
    Lines lines(text);
    while (!lines.atEnd()) {
        std::string_view line = lines.take();
        const std::size_t number = lines.number();
        try {
            if (line.find_first_not_of(" \t\r") == std::string_view::npos || line.front() == '#') {
                continue;
            }
            if (isSnmprec(line)) {
                line = line.substr(0, line.size() - (line.ends_with('\r') ? 1 : 0));
                walk.objects.push_back(parseSnmprec(line));
            } else {
                takeVariable(line, lines, walk);
            }
        } catch (const WalkError &error) {
            throw WalkError("line " + std::to_string(number) + ": " + error.what());
        }
    }
    sort(walk);
    return walk;
}

} // namespace ipmib::support
