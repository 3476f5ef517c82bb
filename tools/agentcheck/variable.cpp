// SPDX-License-Identifier: BSD-3-Clause
// Variables in words.
#include "variable.h"

#include "host/catalogue.h"

#include <array>
#include <cstdio>

namespace ipmib::agentcheck
{
namespace
{

std::string hexText(Tag tag)
{
    std::array<char, 8> text;
    std::snprintf(text.data(), text.size(), "0x%02x", static_cast<unsigned>(tag));
    return text.data();
}

std::string octetsText(const std::vector<std::uint8_t> &octets)
{
    constexpr std::size_t shown = 24;
    std::string text = std::to_string(octets.size()) + " octets";
    for (std::size_t i = 0; i < octets.size() && i < shown; ++i) {
        std::array<char, 4> octet;
        std::snprintf(octet.data(), octet.size(), " %02x", octets[i]);
        text += octet.data();
    }
    return octets.size() > shown ? text + " ..." : text;
}

} // namespace

std::string textOf(Tag tag)
{
    switch (tag) {
    case Tag::integer:
        return "Integer32";
    case Tag::octets:
        return "OCTET STRING";
    case Tag::null:
        return "NULL";
    case Tag::objectId:
        return "OBJECT IDENTIFIER";
    case Tag::ipAddress:
        return "IpAddress";
    case Tag::counter32:
        return "Counter32";
    case Tag::unsigned32:
        return "Unsigned32";
    case Tag::timeTicks:
        return "TimeTicks";
    case Tag::counter64:
        return "Counter64";
    case Tag::noSuchObject:
        return "noSuchObject";
    case Tag::noSuchInstance:
        return "noSuchInstance";
    case Tag::endOfMibView:
        return "endOfMibView";
    }
    return "type " + hexText(tag);
}

std::string textOf(const Value &value)
{
    switch (value.tag) {
    case Tag::integer:
        return std::to_string(static_cast<std::int32_t>(static_cast<std::uint32_t>(value.number)));
    case Tag::counter32:
    case Tag::unsigned32:
    case Tag::timeTicks:
    case Tag::counter64:
        return std::to_string(value.number);
    case Tag::octets:
    case Tag::ipAddress:
        return octetsText(value.octets);
    case Tag::objectId:
        return host::textOf(value.objectId);
    default:
        return textOf(value.tag);
    }
}

} // namespace ipmib::agentcheck
