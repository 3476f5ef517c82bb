// SPDX-License-Identifier: BSD-3-Clause
// Values as the net-snmp tools print them, with their types.
#include "support/walk/walk_text.h"

#include <bit>
#include <charconv>

namespace ipmib::support
{
namespace
{

[[noreturn]] void refuse(std::string_view value, const char *what)
{
    throw WalkError(quotedStart(value) + " is not " + what);
}

// What stands between words that are separated by blanks or ends of lines.
std::vector<std::string_view> wordsOf(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n";
    std::vector<std::string_view> words;
    for (std::size_t begin = text.find_first_not_of(blanks); begin != std::string_view::npos;
         begin = text.find_first_not_of(blanks, begin)) {
        const std::size_t end = std::min(text.find_first_of(blanks, begin), text.size());
        words.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return words;
}

// "7", "up(7)" or "7 seconds".
std::string_view numberOf(std::string_view text)
{
    const std::size_t open = text.rfind('(');
    if (text.ends_with(')') && open != std::string_view::npos) {
        return text.substr(open + 1, text.size() - open - 2);
    }
    return text.substr(0, text.find(' '));
}

std::uint64_t integer(std::string_view text)
{
    const auto number = parseInteger(numberOf(text));
    return number ? *number : (refuse(text, "an integer of 32 bits"), 0);
}

std::uint64_t natural(std::string_view text, std::uint64_t limit)
{
    const auto number = parseNumber(numberOf(text), limit);
    return number ? *number : (refuse(text, "a number, or a larger one than its type has"), 0);
}

// "(4711) 0:00:47.11"
std::uint64_t timeTicks(std::string_view text)
{
    const std::size_t close = text.find(')');
    const auto ticks = text.starts_with('(') && close != std::string_view::npos
                           ? parseNumber(text.substr(1, close - 1), UINT32_MAX)
                           : std::nullopt;
    return ticks ? *ticks : (refuse(text, "a number of hundredths of a second in parentheses"), 0);
}

// "0A 1B 2C", in several lines.
std::string hexOctets(std::string_view text)
{
    std::string octets;
    for (const std::string_view word : wordsOf(text)) {
        const auto octet = parseHexDigits(word);
        octets += octet && octet->size() == 1 ? *octet : (refuse(word, "an octet, two hexadecimal digits"), "");
    }
    return octets;
}

// In quotes, where a backslash stands in front of a quote and of a backslash.
std::string quotedText(std::string_view text)
{
    std::string octets;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            if (text.find_first_not_of(" \r", i + 1) != std::string_view::npos) {
                refuse(text.substr(i), "the end of a text in quotes");
            }
            return octets;
        }
        i += text[i] == '\\' && i + 1 < text.size() ? 1 : 0;
        octets += text[i];
    }
    refuse(text, "a text in quotes");
}

// Octets, and behind them the numbers of the bits that are set, with their names or without: "A0 0 apples(2)".
std::string bits(std::string_view text)
{
    const std::vector<std::string_view> words = wordsOf(text);
    std::string octets;
    std::vector<std::string> set;
    for (std::size_t count = 0;; ++count) {
        bool fits = words.size() == count + set.size();
        for (std::size_t i = 0; fits && i < set.size(); ++i) {
            fits = numberOf(words[count + i]) == set[i];
        }
        if (fits) {
            return octets;
        }
        const auto octet = count < words.size() ? parseHexDigits(words[count]) : std::nullopt;
        if (!octet || octet->size() != 1) {
            refuse(text, "octets with the bits that are set in them");
        }
        octets += *octet;
        for (unsigned bit = 0; bit < 8; ++bit) {
            if ((static_cast<unsigned char>(octet->front()) >> (7 - bit) & 1) != 0) {
                set.push_back(std::to_string(count * 8 + bit));
            }
        }
    }
}

// A float in an opaque value: an ASN.1 tag and a length in front of four octets.
std::string opaqueFloat(std::string_view text)
{
    const std::string_view number = numberOf(text);
    float value = 0;
    const auto [behind, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || behind != number.data() + number.size()) {
        refuse(text, "a floating-point number");
    }
    std::string octets = "\x9F\x78\x04";
    const auto representation = std::bit_cast<std::uint32_t>(value);
    for (int shift = 24; shift >= 0; shift -= 8) {
        octets += static_cast<char>(representation >> shift & 0xFF);
    }
    return octets;
}

std::string address(std::string_view text)
{
    const auto octets = parseAddress(text);
    return octets ? *octets : (refuse(text, "an IPv4 address"), "");
}

RecordedObject string(std::string_view text, bool &isHinted)
{
    isHinted = !text.starts_with('"');
    return {{}, RecordedType::octets, 0, isHinted ? std::string(text) : quotedText(text), {}};
}

RecordedObject number(RecordedType type, std::uint64_t value)
{
    return {{}, type, value, {}, {}};
}

RecordedObject octets(RecordedType type, std::string value)
{
    return {{}, type, 0, std::move(value), {}};
}

RecordedObject identifier(std::string_view text)
{
    const auto ids = parseIdentifier(text);
    if (!ids) {
        refuse(text, "a numeric object identifier");
    }
    return {{}, RecordedType::objectId, 0, {}, *ids};
}

} // namespace

std::optional<RecordedObject> parseWalkValue(std::string_view text, bool &isHinted)
{
    constexpr std::string_view wrongType = "Wrong Type (should be ";
    if (const std::size_t end = text.find("): "); text.starts_with(wrongType) && end != std::string_view::npos) {
        text.remove_prefix(end + 3);
    }
    if (text.starts_with('"')) {
        return string(text, isHinted);
    }
    if (text == "NULL" || text.starts_with("No Such ") || text.starts_with("No more variables left ")) {
        return std::nullopt;
    }
    const auto follows = [&text](std::string_view type) {
        const bool isThere = text.starts_with(type);
        text.remove_prefix(isThere ? std::min(text.size(), type.size() + 1) : 0); // and a blank, unless nothing follows
        return isThere;
    };
    if (follows("STRING:")) {
        return string(text, isHinted);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    if (follows("Hex-STRING:")) {
        return octets(RecordedType::octets, hexOctets(text));
    }
    if (follows("INTEGER:")) {
        return number(RecordedType::integer, integer(text));
    }
    if (follows("Counter32:")) {
        return number(RecordedType::counter32, natural(text, UINT32_MAX));
    }
    if (follows("Gauge32:") || follows("Unsigned32:") || follows("UInteger32:")) {
        return number(RecordedType::unsigned32, natural(text, UINT32_MAX));
    }
    if (follows("Counter64:")) {
        return number(RecordedType::counter64, natural(text, UINT64_MAX));
    }
    if (follows("Timeticks:")) {
        return number(RecordedType::timeTicks, timeTicks(text));
    }
    if (follows("OID:")) {
        return identifier(text);
    }
    if (follows("IpAddress:")) {
        return octets(RecordedType::ipAddress, address(text));
    }
    if (follows("BITS:")) {
        return octets(RecordedType::octets, bits(text));
    }
    if (follows("Opaque: Float:")) {
        return octets(RecordedType::opaque, opaqueFloat(text));
    }
    if (follows("OPAQUE:")) {
        return octets(RecordedType::opaque, hexOctets(text));
    }
    if (text.starts_with("Opaque: ")) {
        return std::nullopt;
    }
    refuse(text, "a value with its type, such as \"INTEGER: 1\"");
}

} // namespace ipmib::support
