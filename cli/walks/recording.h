// SPDX-License-Identifier: BSD-3-Clause
// All instances that a device has, as recorded objects.
#pragma once

#include "local_device.h"

#include "support/walk/recorded_object.h"

#include <vector>

namespace ipmib::cli
{

using support::RecordedObject;
using Recording = std::vector<RecordedObject>; // ascending, each name once

inline const std::vector<std::uint32_t> sysUpTime{1, 3, 6, 1, 2, 1, 1, 3, 0};

// The first one that is not in front of the name.
Recording::const_iterator placeOf(const Recording &recording, const std::vector<std::uint32_t> &name);

// Of this moment. Throws std::runtime_error when an answer is unusable.
Recording recordingOf(LocalDevice &device);

} // namespace ipmib::cli
