// SPDX-License-Identifier: BSD-3-Clause
// Hands lines to the library's log.

#include "log.h"

#include "net_snmp.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace ipmib::agent
{

namespace
{

// A service manager names the stream that it connected to the journal; the variable may have been inherited.
bool standardErrorIsTheJournal()
{
    const char *stream = std::getenv("JOURNAL_STREAM");
    struct stat status {
    };
    return stream != nullptr && fstat(STDERR_FILENO, &status) == 0 &&
           stream == std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
}

} // namespace

void logLine(int priority, const char *line)
{
    snmp_log(priority, "%s\n", line);
}

void chooseDefaultLog(bool foreground)
{
    if (foreground && !standardErrorIsTheJournal()) {
        snmp_enable_stderrlog();
    } else {
        snmp_enable_syslog_ident("ipmibd", LOG_DAEMON);
    }
}

void chooseWarningsAlone()
{
    netsnmp_register_loghandler(NETSNMP_LOGHANDLER_STDERR, LOG_WARNING);
}

} // namespace ipmib::agent
