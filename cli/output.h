// SPDX-License-Identifier: BSD-3-Clause
// What ipmibctl says beside what it was asked for.
#pragma once

#include <string_view>

namespace ipmib::cli
{

// One line on standard error, with the program's name in front, behind all that was written to standard output so far.
// What is not printable in it is escaped.
void complain(std::string_view line);

} // namespace ipmib::cli
