// SPDX-License-Identifier: BSD-3-Clause
// One log for the library, the resolver, the platform and this program: the library's.
#pragma once

namespace ipmib::agent
{

// Priorities as in syslog; the line carries no newline. What is not printable in it is escaped.
void logLine(int priority, const char *line);

// Where the log goes when the user did not say: to standard error in the foreground, else to syslog, which also is the
// way by which the journal learns priorities. Or warnings and errors alone, to standard error.
enum class DefaultLog { none, foreground, background, warnings };

// From here on, what is not printable is escaped in every line, in the library's, too.
void openLog(DefaultLog log);

// For as long as it lives, whoever causes lines has few of a kind written, by the library, too; what is left out is
// counted in the log when the minute is over. Lines of debugging are not limited.
class LimitedLog
{
  public:
    LimitedLog();
    ~LimitedLog();
    LimitedLog(const LimitedLog &) = delete;
    LimitedLog &operator=(const LimitedLog &) = delete;
};

} // namespace ipmib::agent
