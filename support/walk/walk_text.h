// SPDX-License-Identifier: BSD-3-Clause
// A walk of an agent as a text: what snmpwalk prints with numeric identifiers (-On), or an snmprec file.
#pragma once

#include "support/walk/recorded_object.h"

namespace ipmib::support
{

struct Walk {
    std::vector<RecordedObject> objects; // ascending, each name once
    // What is not among them: "line 12: ..." each.
    std::vector<std::string> leftOut;
    // Strings that were printed by a display hint, without quotes: taken as they stand.
    std::size_t hinted = 0;
};

// Throws WalkError, "line 12: ...", for what cannot be understood.
Walk parseWalk(std::string_view text);

// What snmpwalk -On prints behind "Type: " and " = ": the value of one variable, with its type in front. Nothing when
// it says that there is none, or that it is one which cannot be served. `isHinted` is set for a string without quotes.
std::optional<RecordedObject> parseWalkValue(std::string_view text, bool &isHinted);

} // namespace ipmib::support
