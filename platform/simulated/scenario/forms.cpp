// SPDX-License-Identifier: BSD-3-Clause
// Texts of a scenario that have a form.
#include "scenario/forms.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <algorithm>
#include <charconv>

namespace ipmib::simulated
{
namespace
{

std::optional<PackedAddress> parseAddress(const std::string &text)
{
    in6_addr bytes;
    if (inet_pton(AF_INET6, text.c_str(), &bytes) != 1) {
        return std::nullopt;
    }
    return PackedAddress::of(&bytes);
}

std::optional<std::uint32_t> parseIpv4Address(const std::string &text)
{
    in_addr bytes;
    if (inet_pton(AF_INET, text.c_str(), &bytes) != 1) {
        return std::nullopt;
    }
    return ntohl(bytes.s_addr);
}

// The number behind the slash.
std::optional<std::uint8_t> parseLength(const std::string &text, std::size_t slash, std::uint8_t longest)
{
    std::uint8_t length = 0;
    const char *const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + slash + 1, end, length);
    return error == std::errc() && rest == end && length <= longest ? std::optional(length) : std::nullopt;
}

// An address and the length of its prefix, by the address's parser.
template <class Result, class Parser>
std::optional<Result> parseWithLength(const std::string &text, Parser parse, std::uint8_t longest)
{
    const auto slash = text.find('/');
    if (slash == std::string::npos) {
        return std::nullopt;
    }
    const auto address = parse(text.substr(0, slash));
    const auto length = parseLength(text, slash, longest);
    return address && length ? std::optional(Result{*address, *length}) : std::nullopt;
}

std::optional<AddressAndLength> parseIpv6WithLength(const std::string &text)
{
    return parseWithLength<AddressAndLength>(text, parseAddress, 128);
}

void requireUnicast(const Value &value, const PackedAddress &address)
{
    if (address == PackedAddress{} || address.isMulticast()) {
        value.refuse("an address that one node has");
    }
}

void requireUnicast(const Value &value, std::uint32_t ipv4)
{
    if (ipv4 == INADDR_ANY || ipv4 == INADDR_BROADCAST || IN_MULTICAST(ipv4)) {
        value.refuse("an address that one node has");
    }
}

int hexDigit(char character)
{
    int digit = -1;
    std::from_chars(&character, &character + 1, digit, 16);
    return digit;
}

} // namespace

PackedAddress readAddress(const Value &value)
{
    constexpr const char *expected = "an IPv6 address like \"2001:db8::1\"";
    const auto address = parseAddress(value.text(expected));
    if (!address) {
        value.refuse(expected);
    }
    requireUnicast(value, *address);
    return *address;
}

AddressAndLength readAddressAndLength(const Value &value)
{
    constexpr const char *expected = "an IPv6 address and the length of its prefix like \"2001:db8::1/64\"";
    const auto read = parseIpv6WithLength(value.text(expected));
    if (!read) {
        value.refuse(expected);
    }
    requireUnicast(value, read->address);
    return *read;
}

AddressAndLength readPrefix(const Value &value)
{
    constexpr const char *expected = "an IPv6 prefix like \"2001:db8::/64\"";
    const auto read = parseIpv6WithLength(value.text(expected));
    if (!read || read->address.masked(read->length) != read->address) {
        value.refuse(expected);
    }
    return *read;
}

std::uint32_t readIpv4Address(const Value &value)
{
    constexpr const char *expected = "an IPv4 address like \"192.0.2.1\"";
    const auto address = parseIpv4Address(value.text(expected));
    if (!address) {
        value.refuse(expected);
    }
    requireUnicast(value, *address);
    return *address;
}

Ipv4AddressAndLength readIpv4AddressAndLength(const Value &value)
{
    constexpr const char *expected = "an IPv4 address and the length of its prefix like \"192.0.2.1/24\"";
    const auto read = parseWithLength<Ipv4AddressAndLength>(value.text(expected), parseIpv4Address, 32);
    if (!read) {
        value.refuse(expected);
    }
    requireUnicast(value, read->address);
    return *read;
}

Ipv4AddressAndLength readIpv4Prefix(const Value &value)
{
    constexpr const char *expected = "an IPv4 prefix like \"192.0.2.0/24\"";
    const auto read = parseWithLength<Ipv4AddressAndLength>(value.text(expected), parseIpv4Address, 32);
    if (!read || ipv4Masked(read->address, read->length) != read->address) {
        value.refuse(expected);
    }
    return *read;
}

Mac readMac(const Value &value)
{
    constexpr const char *expected = "a link-layer address like \"02:00:5e:00:53:01\"";
    const std::string &text = value.text(expected);
    Mac mac;
    if (text.size() != mac.size() * 3 - 1) {
        value.refuse(expected);
    }
    for (std::size_t i = 0; i < mac.size(); ++i) {
        const int high = hexDigit(text[i * 3]);
        const int low = hexDigit(text[i * 3 + 1]);
        if (high < 0 || low < 0 || (i + 1 < mac.size() && text[i * 3 + 2] != ':')) {
            value.refuse(expected);
        }
        mac[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return mac;
}

std::uint32_t readLifetime(const Value &value, std::uint32_t longest)
{
    if (!value.isText()) {
        return static_cast<std::uint32_t>(value.number(0, longest));
    }
    constexpr Word words[] = {{"infinite", platform::infiniteLifetime}};
    return value.word(words);
}

void failWithAny(Object &object, std::initializer_list<const char *> names, const char *why)
{
    for (const char *name : names) {
        if (const auto member = object.find(name)) {
            member->fail(why);
        }
    }
}

Lifetime readRenewed(Object &object, const char *name, std::uint32_t longest)
{
    Lifetime lifetime;
    if (const auto seconds = object.find(name)) {
        lifetime.seconds = readLifetime(*seconds, longest);
    }
    lifetime.renewedEvery = object.number("renewed", 0, 1, UINT32_MAX);
    return lifetime;
}

void readLifetimes(Object &object, Lifetime &valid, Lifetime &preferred)
{
    valid = readRenewed(object, "valid");
    preferred = valid;
    if (const auto said = object.find("preferred")) {
        preferred.seconds = readLifetime(*said);
        if (preferred.seconds > valid.seconds) {
            said->fail("the preferred lifetime is not longer than the valid one");
        }
    }
}

void readLinkLayer(Object &object, Neighbour &neighbour)
{
    if (const auto mac = object.find("mac")) {
        const Mac bytes = readMac(*mac);
        std::copy(bytes.begin(), bytes.end(), neighbour.linkLayer);
    }
}

} // namespace ipmib::simulated
