// SPDX-License-Identifier: BSD-3-Clause
// Reads a scenario file.
#pragma once

#include "device/device.h"

#include <string>

namespace ipmib::simulated
{

// Throws ScenarioError, with the name of the file in front.
Device readScenario(const std::string &path);

} // namespace ipmib::simulated
