// SPDX-License-Identifier: BSD-3-Clause
// Log lines of the platform, written by the host.
#include "core/log.h"

#include <ipmib/platform_hooks.h>

#include <cstdarg>
#include <cstdio>

namespace ipmib::platform
{

namespace
{

LogSink sink = nullptr;

void write(int priority, const char *format, va_list arguments)
{
    if (sink == nullptr) {
        return;
    }
    char line[512];
    std::vsnprintf(line, sizeof line, format, arguments);
    sink(priority, line);
}

} // namespace

void setLogSink(LogSink newSink)
{
    sink = newSink;
}

void logError(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(IPMIB_LOG_ERR, format, arguments);
    va_end(arguments);
}

void logWarning(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(IPMIB_LOG_WARNING, format, arguments);
    va_end(arguments);
}

void logInfo(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    write(IPMIB_LOG_INFO, format, arguments);
    va_end(arguments);
}

} // namespace ipmib::platform
