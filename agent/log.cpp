// SPDX-License-Identifier: BSD-3-Clause
// Hands lines to the library's log.

#include "log.h"

#include "net_snmp.h"

namespace ipmib::agent
{

void logLine(int priority, const char *line)
{
    snmp_log(priority, "%s\n", line);
}

void chooseDefaultLog(bool foreground)
{
    if (foreground) {
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
