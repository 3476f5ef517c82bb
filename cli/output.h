// SPDX-License-Identifier: BSD-3-Clause
// What ipmibctl says beside what it was asked for.
#pragma once

#include <cstddef>
#include <string_view>

namespace ipmib::cli
{

// Of the name that complaints begin with.
inline constexpr std::size_t programPrefixLength = sizeof "ipmibctl: " - 1;

// One line on standard error, with the program's name in front, behind all that was written to standard output so far.
// What is not printable in it is escaped.
void complain(std::string_view line);

} // namespace ipmib::cli
