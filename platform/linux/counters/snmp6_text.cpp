// SPDX-License-Identifier: BSD-3-Clause
// The text in which the kernel tells its IPv6 counters.
#include "counters/snmp6_text.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace ipmib::platform
{

namespace
{

constexpr std::string_view blanks = " \t";

struct Named {
    std::string_view name;
    std::uint64_t &(*counter)(Snmp6Counters &counters);
};
constexpr Named fields[] = {
    {"Icmp6InMsgs", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.icmp6.inMsgs; }},
    {"Icmp6InErrors", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.icmp6.inErrors; }},
    {"Icmp6OutMsgs", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.icmp6.outMsgs; }},
    {"Icmp6OutErrors", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.icmp6.outErrors; }},
    {"Udp6InDatagrams", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.udp6.inDatagrams; }},
    {"Udp6NoPorts", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.udp6.noPorts; }},
    {"Udp6InErrors", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.udp6.inErrors; }},
    {"Udp6OutDatagrams", [](Snmp6Counters &counters) -> std::uint64_t & { return counters.udp6.outDatagrams; }},
};

bool isBlank(char character)
{
    return blanks.find(character) != std::string_view::npos;
}

bool takePrefix(std::string_view &text, std::string_view prefix)
{
    const bool there = text.starts_with(prefix);
    text.remove_prefix(there ? prefix.size() : 0);
    return there;
}

std::optional<std::uint8_t> messageType(std::string_view text)
{
    std::uint8_t type = 0;
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, type);
    return error == std::errc() && stop == end ? std::optional(type) : std::nullopt;
}

} // namespace

Snmp6Text::Meaning Snmp6Text::meaningOf(std::string_view name)
{
    using enum Meaning::Of;
    const auto *const known =
        std::find_if(std::begin(fields), std::end(fields), [&](const Named &each) { return each.name == name; });
    if (known != std::end(fields)) {
        return {named, static_cast<std::uint8_t>(known - fields)};
    }
    if (takePrefix(name, "Ip6")) {
        const Ip6Counter counter = ip6CounterByName(name);
        return {counter == Ip6Counter::ignored ? nothing : ip6, static_cast<std::uint8_t>(counter)};
    }
    const bool isIn = takePrefix(name, "Icmp6InType");
    if (isIn || takePrefix(name, "Icmp6OutType")) {
        const auto type = messageType(name);
        return type ? Meaning{isIn ? icmp6InType : icmp6OutType, *type} : Meaning{nothing, 0};
    }
    return {name.starts_with("Icmp6") || name.starts_with("Udp6") ? nothing : elsewhere, 0};
}

// The first line of the text.
Snmp6Text::Line Snmp6Text::lineOf(std::string_view text)
{
    const std::string_view line = text.substr(0, text.find('\n'));
    const std::size_t nameEnd = std::min(line.find_first_of(blanks), line.size());
    const std::size_t numberStart = std::min(line.find_first_not_of(blanks, nameEnd), line.size());
    return {std::string(line.substr(0, numberStart)), meaningOf(line.substr(0, nameEnd))};
}

bool Snmp6Text::begins(std::string_view text, const Line &line)
{
    return text.starts_with(line.head) && text.size() > line.head.size() && !line.head.empty() &&
           isBlank(line.head.back()) && !isBlank(text[line.head.size()]);
}

// From the first line's number to the next line. What is not a number counts nothing.
void Snmp6Text::takeNumber(std::string_view &text, Meaning meaning, Snmp6Counters &counters)
{
    const char *stop = text.data();
    if (meaning.of > Meaning::Of::nothing) {
        const char *const end = text.data() + text.size();
        std::uint64_t value = 0;
        const auto parsed = std::from_chars(stop, end, value);
        stop = parsed.ptr;
        if (parsed.ec == std::errc() && (stop == end || *stop == '\n')) {
            set(meaning, value, counters);
        }
    }
    text.remove_prefix(static_cast<std::size_t>(stop - text.data()));
    text.remove_prefix(std::min(text.size(), text.find('\n')));
    text.remove_prefix(text.empty() ? 0 : 1);
}

void Snmp6Text::set(Meaning meaning, std::uint64_t value, Snmp6Counters &counters)
{
    switch (meaning.of) {
    case Meaning::Of::ip6:
        counters.ip6.set(static_cast<Ip6Counter>(meaning.which), value);
        break;
    case Meaning::Of::icmp6InType:
    case Meaning::Of::icmp6OutType:
        (meaning.of == Meaning::Of::icmp6InType ? counters.icmp6.inType : counters.icmp6.outType)[meaning.which] =
            value;
        counters.icmp6.listed.set(meaning.which);
        break;
    case Meaning::Of::named:
        fields[meaning.which].counter(counters) = value;
        break;
    case Meaning::Of::elsewhere:
    case Meaning::Of::nothing:
        break;
    }
}

void Snmp6Text::parse(std::string_view text, Snmp6Counters &counters)
{
    counters = {};
    std::size_t known = 0;
    for (; known < lines_.size() && begins(text, lines_[known]); ++known) {
        text.remove_prefix(lines_[known].head.size());
        takeNumber(text, lines_[known].meaning, counters);
    }
    const auto isElsewhere = [this](std::size_t line) { return lines_[line].meaning.of == Meaning::Of::elsewhere; };
    if (known >= 2 && known == lines_.size() && isElsewhere(known - 1) && !isElsewhere(known - 2)) {
        return;
    }
    lines_.resize(known);
    while (!text.empty()) {
        lines_.push_back(lineOf(text));
        text.remove_prefix(lines_.back().head.size());
        takeNumber(text, lines_.back().meaning, counters);
    }
    while (lines_.size() >= 2 && isElsewhere(lines_.size() - 1) && isElsewhere(lines_.size() - 2)) {
        lines_.pop_back();
    }
}

} // namespace ipmib::platform
