// SPDX-License-Identifier: BSD-3-Clause
// Tells a service manager what state this daemon is in.
#pragma once

namespace ipmib::agent
{

// Each does nothing when no service manager asked for it (NOTIFY_SOCKET).
void notifyReady();
void notifyReloading();
void notifyStopping();

} // namespace ipmib::agent
