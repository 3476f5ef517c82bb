// SPDX-License-Identifier: BSD-3-Clause
// Foreign text on its way to a terminal or a log.
#pragma once

#include <string>
#include <string_view>

namespace ipmib::support
{

// The text as one line that does nothing but be read: whoever names an interface must not move the cursor, turn the
// order of letters round or hide any. What is not printable, in UTF-8, is written as the number of its character
// ("\u202e", above four digits "\U000e0001") or of its byte ("\x1b", "\x9b" for one that belongs to no character).
// What has been made printable stays as it is when it is done again.
std::string printable(std::string_view text);

} // namespace ipmib::support
