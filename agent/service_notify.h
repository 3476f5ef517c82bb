// SPDX-License-Identifier: BSD-3-Clause
// Tells a service manager what state this daemon is in.
#pragma once

#include <chrono>

namespace ipmib::agent
{

// Each does nothing when no service manager asked for it (NOTIFY_SOCKET).
void notifyReady();
void notifyReloading();
void notifyStopping();
void notifyAlive();

// How long the manager waits for notifyAlive before it takes this process for dead; 0 when it does not wait for it.
std::chrono::microseconds watchdogPatience();

} // namespace ipmib::agent
