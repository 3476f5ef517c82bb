// SPDX-License-Identifier: BSD-3-Clause
// What radvd.conf says of router advertisements.
#pragma once

#include "advertisements/radvd_options.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace ipmib::platform
{

using RadvdConf = std::map<std::string, RadvdInterface, std::less<>>; // by interface name

// Reads the text of the file. On success fills `conf`; otherwise leaves it alone and returns one line that names file,
// line, what was expected and what was found.
std::optional<std::string> parseRadvdConf(std::string_view text, std::string_view file, RadvdConf &conf);

} // namespace ipmib::platform
