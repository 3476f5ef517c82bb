// SPDX-License-Identifier: BSD-3-Clause
// What ipmibd exits with.
#pragma once

namespace ipmib::agent
{

enum ExitStatus { exitSuccess = 0, exitFailure = 1, exitUsage = 2 };

} // namespace ipmib::agent
