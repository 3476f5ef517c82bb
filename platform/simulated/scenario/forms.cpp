// SPDX-License-Identifier: BSD-3-Clause
// Texts of a scenario that have a form.
#include "scenario/forms.h"

#include <arpa/inet.h>

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

std::optional<AddressAndLength> parseWithLength(const std::string &text)
{
    const auto slash = text.find('/');
    if (slash == std::string::npos) {
        return std::nullopt;
    }
    const auto address = parseAddress(text.substr(0, slash));
    AddressAndLength result{address.value_or(PackedAddress{}), 0};
    const char *const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + slash + 1, end, result.length);
    return address && error == std::errc() && rest == end && result.length <= 128 ? std::optional(result)
                                                                                  : std::nullopt;
}

void requireUnicast(const Value &value, const PackedAddress &address)
{
    if (address == PackedAddress{} || address.isMulticast()) {
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
    const auto read = parseWithLength(value.text(expected));
    if (!read) {
        value.refuse(expected);
    }
    requireUnicast(value, read->address);
    return *read;
}

AddressAndLength readPrefix(const Value &value)
{
    constexpr const char *expected = "an IPv6 prefix like \"2001:db8::/64\"";
    const auto read = parseWithLength(value.text(expected));
    if (!read || read->address.masked(read->length) != read->address) {
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

} // namespace ipmib::simulated
