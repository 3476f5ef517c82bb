// SPDX-License-Identifier: BSD-3-Clause
// Goes through the text character by character; a byte that begins none is one for itself.
#include "support/printable.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>

namespace ipmib::support
{
namespace
{

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

// Of Unicode 15: controls, formats (Cc, Cf), separators of lines and paragraphs (Zl, Zp), whatever is ignorable by
// default, as fillers and selectors of variants are, what is for private use, and what is no character. In order.
constexpr Range notPrintable[] = {
    {0x0000, 0x001F},   {0x007F, 0x009F},   {0x00AD, 0x00AD},   {0x034F, 0x034F},   {0x0600, 0x0605},
    {0x061C, 0x061C},   {0x06DD, 0x06DD},   {0x070F, 0x070F},   {0x0890, 0x0891},   {0x08E2, 0x08E2},
    {0x115F, 0x1160},   {0x17B4, 0x17B5},   {0x180B, 0x180F},   {0x200B, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F},   {0x3164, 0x3164},   {0xE000, 0xF8FF},   {0xFDD0, 0xFDEF},   {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF},   {0xFFA0, 0xFFA0},   {0xFFF0, 0xFFFB},   {0xFFFE, 0xFFFF},   {0x110BD, 0x110BD},
    {0x110CD, 0x110CD}, {0x13430, 0x1343F}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0x10FFFF},
};

bool isPrintable(std::uint32_t character)
{
    const Range *range = std::ranges::lower_bound(notPrintable, character, {}, &Range::last);
    const bool isListed = range != std::end(notPrintable) && range->first <= character;
    const bool isLastOfPlane = (character & 0xFFFE) == 0xFFFE; // which never is a character
    return !isListed && !isLastOfPlane;
}

struct Character {
    std::uint32_t number;
    std::size_t length; // 0: the text begins with a byte that belongs to no character, which is the number
};

// Takes the shortest form alone, and no surrogates, as UTF-8 has it.
Character firstOf(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
    const std::uint8_t lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC0 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF8 ? 4
                                             : 0;
    if (length <= 1) {
        return {lead, length};
    }
    if (length > text.size()) {
        return {lead, 0};
    }
    std::uint32_t number = lead & (0x7Fu >> length);
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0) != 0x80) {
            return {lead, 0};
        }
        number = number << 6 | (byte(at) & 0x3F);
    }
    constexpr std::uint32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = number >= 0xD800 && number <= 0xDFFF;
    const bool isNone = number < smallest[length] || number > 0x10FFFF || isSurrogate;
    return isNone ? Character{lead, 0} : Character{number, length};
}

std::string escaped(Character character)
{
    char text[16];
    const char *pattern = character.length <= 1 ? "\\x%02x" : character.number <= 0xFFFF ? "\\u%04x" : "\\U%08x";
    std::snprintf(text, sizeof text, pattern, static_cast<unsigned>(character.number));
    return text;
}

} // namespace

std::string printable(std::string_view text)
{
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const Character character = firstOf(text);
        if (character.length > 0 && isPrintable(character.number)) {
            line += text.substr(0, character.length);
        } else {
            line += escaped(character);
        }
        text.remove_prefix(std::max<std::size_t>(character.length, 1));
    }
    return line;
}

} // namespace ipmib::support
