// SPDX-License-Identifier: BSD-3-Clause
// What the host calls to drive the platform.
#include "core/hooks.h"
#include "simulated_platform.h"

#include <ipmib/contract_note.h>

IPMIB_CONTRACT_NOTE;

extern "C" __attribute__((visibility("default"))) const IpmibPlatformHooks ipmib_platform_hooks =
    ipmib::platform::Hooks<ipmib::simulated::SimulatedPlatform>::record();
