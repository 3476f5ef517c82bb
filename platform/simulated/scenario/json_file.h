// SPDX-License-Identifier: BSD-3-Clause
// A JSON file as a document.
#pragma once

#include "scenario/value.h"

#include <string>

namespace ipmib::simulated
{

// Throws ScenarioError: "cannot read it: No such file or directory", "line 3, column 5: ...". A key that stands twice
// in one object is an error.
Json readJsonFile(const std::string &path);

} // namespace ipmib::simulated
