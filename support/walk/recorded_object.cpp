// SPDX-License-Identifier: BSD-3-Clause
// Parts of recorded values that all forms of recording have in common.
#include "support/walk/recorded_object.h"

#include <algorithm>
#include <charconv>

namespace ipmib::support
{
namespace
{

constexpr std::size_t longestIdentifier = 128;
constexpr std::string_view digits = "0123456789abcdef";

int valueOf(char digit)
{
    const char lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit;
    const auto place = digits.find(lower);
    return place == std::string_view::npos ? -1 : static_cast<int>(place);
}

} // namespace

bool isInFront(const std::vector<std::uint32_t> &left, const std::vector<std::uint32_t> &right)
{
    return std::lexicographical_compare(left.begin(), left.end(), right.begin(), right.end());
}

bool beginsWith(const std::vector<std::uint32_t> &name, const std::vector<std::uint32_t> &root)
{
    return name.size() >= root.size() && std::equal(root.begin(), root.end(), name.begin());
}

std::optional<std::vector<std::uint32_t>> parseIdentifier(std::string_view text)
{
    std::vector<std::uint32_t> ids;
    if (text.starts_with("iso.") || text == "iso") {
        ids.push_back(1);
        text.remove_prefix(std::min<std::size_t>(text.size(), 4));
        if (text.empty()) {
            return ids;
        }
    } else if (text.starts_with('.')) {
        text.remove_prefix(1);
    }
    for (;;) {
        const std::size_t dot = text.find('.');
        const auto id = parseNumber(text.substr(0, dot), UINT32_MAX);
        if (!id || ids.size() == longestIdentifier) {
            return std::nullopt;
        }
        ids.push_back(static_cast<std::uint32_t>(*id));
        if (dot == std::string_view::npos) {
            return ids;
        }
        text.remove_prefix(dot + 1);
    }
}

std::string identifierText(const std::vector<std::uint32_t> &identifier)
{
    std::string text;
    for (const std::uint32_t id : identifier) {
        text += (text.empty() ? "" : ".") + std::to_string(id);
    }
    return text;
}

std::optional<std::uint64_t> parseNumber(std::string_view text, std::uint64_t limit)
{
    std::uint64_t number = 0;
    const char *const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, number);
    return !text.empty() && error == std::errc() && behind == end && number <= limit ? std::optional(number)
                                                                                     : std::nullopt;
}

std::optional<std::uint64_t> parseInteger(std::string_view text)
{
    std::int32_t number = 0;
    const char *const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, number);
    if (text.empty() || error != std::errc() || behind != end) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(number);
}

std::optional<std::string> parseAddress(std::string_view text)
{
    constexpr std::size_t parts = 4;
    std::string octets;
    for (std::size_t part = 0; part < parts; ++part) {
        const std::size_t dot = part + 1 == parts ? std::string_view::npos : text.find('.');
        const auto octet = parseNumber(text.substr(0, dot), UINT8_MAX);
        if (!octet || (part + 1 != parts && dot == std::string_view::npos)) {
            return std::nullopt;
        }
        octets += static_cast<char>(*octet);
        text.remove_prefix(dot == std::string_view::npos ? text.size() : dot + 1);
    }
    return octets;
}

std::optional<std::string> parseHexDigits(std::string_view text)
{
    std::string octets;
    if (text.size() % 2 != 0) {
        return std::nullopt;
    }
    for (; !text.empty(); text.remove_prefix(2)) {
        const int high = valueOf(text[0]);
        const int low = valueOf(text[1]);
        if (high < 0 || low < 0) {
            return std::nullopt;
        }
        octets += static_cast<char>(high * 16 + low);
    }
    return octets;
}

std::string hexDigits(std::string_view octets)
{
    std::string text;
    for (const char octet : octets) {
        text += digits[static_cast<unsigned char>(octet) >> 4];
        text += digits[static_cast<unsigned char>(octet) & 0xF];
    }
    return text;
}

std::string quotedStart(std::string_view text)
{
    constexpr std::size_t longest = 60;
    std::string shown(text.substr(0, longest));
    std::ranges::replace_if(
        shown, [](char letter) { return letter < ' ' || letter > '~'; }, '?');
    return '"' + shown + (text.size() > longest ? "...\"" : "\"");
}

} // namespace ipmib::support
