// SPDX-License-Identifier: BSD-3-Clause
// Log lines of the platform, written by the host.
#pragma once

namespace ipmib::platform
{

using LogSink = void (*)(int priority, const char *line);

// Where lines go; null drops them.
void setLogSink(LogSink sink);

[[gnu::format(printf, 1, 2)]] void logError(const char *format, ...);
[[gnu::format(printf, 1, 2)]] void logWarning(const char *format, ...);
[[gnu::format(printf, 1, 2)]] void logInfo(const char *format, ...);

} // namespace ipmib::platform
