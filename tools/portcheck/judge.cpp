// SPDX-License-Identifier: BSD-3-Clause
// Judges the fields of one record.
#include "judge.h"

#include "key.h"

#include <algorithm>

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint32_t day = 86400;
constexpr std::uint32_t longestUsual = 400 * day;

// Lifetimes are whole hours or days when they are long, and few are longer than a year. What counts down, or is long
// on purpose, passes.
bool isSwappedLifetime(std::uint32_t value)
{
    const std::uint32_t other = swapped(value);
    if (value == UINT32_MAX || value % 3600 == 0 || other > longestUsual) {
        return false;
    }
    return other % day == 0 || (value > longestUsual && (other <= UINT16_MAX || other % 60 == 0));
}

// A small number in the wrong byte order ends in zero bytes; what ends in decimal zeros was written by a person.
bool canBeSwapped(std::uint32_t value)
{
    return value % 0x10000 == 0 || value % 1000 != 0;
}

} // namespace

void Judge::field(Promise promise, const char *name, std::uint32_t value,
                  const std::function<bool(std::uint32_t)> &fits, const std::string &rule)
{
    if (!fits(value)) {
        tell(promise, name, value, rule, canBeSwapped(value) && fits(swapped(value)));
    }
}

void Judge::code(Promise promise, const char *name, std::uint32_t value)
{
    if (value >> 24 != 0 && swapped(value) <= UINT16_MAX) {
        tell(promise, name, value, "one of the codes of records.h", true);
    }
}

void Judge::time(Promise promise, const char *name, std::uint32_t value, std::uint32_t now)
{
    const bool inHundredths = value / 100 <= now && value / 10 > now;
    field(
        promise, name, value, [now](std::uint32_t seconds) { return seconds <= now + 1; },
        "a second since boot that has been (now is " + std::to_string(now) + ")" +
            (inHundredths ? "; in hundredths of a second it would be" : "") +
            (looksSince1970(value) ? "; seconds since 1970 look like this" : ""));
}

void Judge::lifetime(Promise promise, const char *name, std::uint32_t value)
{
    if (isSwappedLifetime(value)) {
        tell(promise, name, value, "a number of seconds that anybody advertises", true);
    }
}

void Judge::linkLocal(const std::uint8_t *address, std::uint32_t ifIndex)
{
    const std::uint32_t within = address[2] * 256U + address[3];
    const bool isPlainOtherwise = std::all_of(address + 4, address + 8, [](std::uint8_t byte) { return byte == 0; });
    if (isLinkLocal(address) && isPlainOtherwise && within != 0 && within == (ifIndex & 0xFFFF)) {
        probe_.broken(Promise::linkLocalPlain, call_,
                      who_ + ": address has the interface, " + std::to_string(within) +
                          ", in its third and fourth byte, which are 0 on the wire");
    }
}

void Judge::tell(Promise promise, const char *name, std::uint32_t value, const std::string &rule, bool isSwapped)
{
    probe_.broken(
        promise, call_,
        who_ + ": " + name + " is " + std::to_string(value) + ", not " + rule +
            (isSwapped ? ": it is " + std::to_string(swapped(value)) + ", the right one in the wrong byte order" : ""));
}

} // namespace ipmib::portcheck
