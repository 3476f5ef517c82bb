// SPDX-License-Identifier: BSD-3-Clause
// What the parts of a model have in common.
#pragma once

#include "walks/model.h"

#include <ipmib/platform_ip.h>

#include <optional>
#include <string>

namespace ipmib::cli
{

inline const Identifier ifEntry{1, 3, 6, 1, 2, 1, 2, 2, 1};
inline const Identifier ifXEntry{1, 3, 6, 1, 2, 1, 31, 1, 1, 1};

inline constexpr std::uint64_t ticksPerSecond = 100;
inline constexpr std::uint64_t isTrue = 1; // TruthValue
inline constexpr std::size_t ipv4Size = 4;

// A number of a column, and what scenarios call it.
struct Word {
    std::uint64_t code;
    const char *text;
};

// Nothing for a number that has no word.
template <std::size_t count>
void putWord(OrderedJson &object, const char *name, const std::optional<std::uint64_t> &code,
             const Word (&words)[count])
{
    for (const Word &word : words) {
        if (code && word.code == *code) {
            object[name] = word.text;
        }
    }
}

struct Address {
    std::uint32_t version = 0;
    std::string octets; // without a zone

    std::string text() const;
    bool isUnicast() const;
    bool isLinkLocal() const;
};

// So many of the numbers, if they are octets.
std::optional<std::string> octetsOf(const Identifier &ids, std::size_t begin, std::size_t count);
// InetAddressType and InetAddress, from there to the end of an index.
std::optional<Address> inetAddress(const Identifier &index, std::size_t begin);

// Null when there is none, or the model has it without this version of IP.
OrderedJson *interfaceOf(ModelledInterfaces &interfaces, std::optional<std::uint64_t> ifIndex, std::uint32_t version);

} // namespace ipmib::cli
