// SPDX-License-Identifier: BSD-3-Clause
// Hands lines to the library's log.

#include "log.h"

#include "line_limit.h"
#include "net_snmp.h"

#include "support/printable.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
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

// A destination of the log, with the library's function for it.
struct Limited {
    NetsnmpLogHandler *write;
    LineLimit limit;
    unsigned alarm = 0;
};

std::map<netsnmp_log_handler *, Limited> limitedLogs;

void writeReport(netsnmp_log_handler *handler, Limited &limited,
                 LineLimit::Clock::time_point now = LineLimit::Clock::now())
{
    for (const std::string &line : limited.limit.takeReport(now)) {
        limited.write(handler, LOG_NOTICE, (line + "\n").c_str());
    }
}

// In the place of the library's.
int writeLimited(netsnmp_log_handler *handler, int priority, const char *line)
{
    Limited &limited = limitedLogs.at(handler);
    writeReport(handler, limited);
    if (priority >= LOG_DEBUG || limited.limit.admits(line, LineLimit::Clock::now())) {
        return limited.write(handler, priority, line);
    }
    if (limited.alarm == 0) {
        limited.alarm = snmp_alarm_register(
            static_cast<unsigned>(LineLimit::period.count()), 0,
            [](unsigned, void *of) {
                auto *const due = static_cast<netsnmp_log_handler *>(of);
                limitedLogs.at(due).alarm = 0;
                writeReport(due, limitedLogs.at(due));
            },
            handler);
    }
    return 0;
}

} // namespace

void logLine(int priority, const char *line)
{
    snmp_log(priority, "%s\n", support::printable(line).c_str());
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

LimitedLog::LimitedLog()
{
    for (netsnmp_log_handler *handler = get_logh_head(); handler != nullptr; handler = handler->next) {
        limitedLogs[handler] = {handler->handler, {}};
        handler->handler = writeLimited;
    }
}

LimitedLog::~LimitedLog()
{
    for (auto &[handler, limited] : limitedLogs) {
        writeReport(handler, limited, LineLimit::Clock::now() + LineLimit::period);
        handler->handler = limited.write;
        if (limited.alarm != 0) {
            snmp_alarm_unregister(limited.alarm);
        }
    }
    limitedLogs.clear();
}

} // namespace ipmib::agent
