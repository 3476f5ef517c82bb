// SPDX-License-Identifier: BSD-3-Clause
// Indexes with IPv4 addresses as numbers.

#include "ipv4/index_number.h"

namespace ipmib::agent
{

namespace
{

constexpr std::uint64_t highest(unsigned bits)
{
    return (std::uint64_t{1} << bits) - 1;
}

} // namespace

std::optional<std::uint64_t> indexNumber(std::span<const oid> index, std::span<const unsigned> bits)
{
    if (index.size() != bits.size()) {
        return std::nullopt;
    }
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < index.size(); ++i) {
        if (index[i] > highest(bits[i])) {
            return std::nullopt;
        }
        number = number << bits[i] | index[i];
    }
    return number;
}

std::uint64_t lastNotBehind(std::span<const oid> index, std::span<const unsigned> bits)
{
    std::uint64_t number = 0;
    bool beyond = false; // what follows a sub-identifier out of range does not matter
    for (std::size_t i = 0; i < bits.size(); ++i) {
        beyond = beyond || (i < index.size() && index[i] > highest(bits[i]));
        number = number << bits[i] | (beyond ? highest(bits[i]) : i < index.size() ? index[i] : 0);
    }
    const bool isShort = !beyond && index.size() < bits.size(); // all that begins with it is behind it
    return isShort && number != 0 ? number - 1 : number;
}

} // namespace ipmib::agent
