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
#include <optional>
#include <string>
#include <string_view>
#include <utility>

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

// A destination of the log: the library's function for it and, while lines are limited, what was written.
struct Destination {
    NetsnmpLogHandler *write;
    std::optional<LineLimit> limit = {};
    unsigned alarm = 0;
};

std::map<netsnmp_log_handler *, Destination> destinations;

void writeReport(netsnmp_log_handler *handler, Destination &destination,
                 LineLimit::Clock::time_point now = LineLimit::Clock::now())
{
    for (const std::string &line : destination.limit->takeReport(now)) {
        destination.write(handler, LOG_NOTICE, (line + "\n").c_str());
    }
}

void reportWhenDue(netsnmp_log_handler *handler, Destination &destination)
{
    if (destination.alarm == 0) {
        destination.alarm = snmp_alarm_register(
            static_cast<unsigned>(LineLimit::period.count()), 0,
            [](unsigned, void *of) {
                auto *const due = static_cast<netsnmp_log_handler *>(of);
                destinations.at(due).alarm = 0;
                writeReport(due, destinations.at(due));
            },
            handler);
    }
}

// In the place of the library's, whose own lines may hold foreign text, too.
int writeLine(netsnmp_log_handler *handler, int priority, const char *line)
{
    Destination &destination = destinations.at(handler);
    std::string_view foreign(line);
    const bool ends = foreign.ends_with('\n');
    foreign.remove_suffix(ends ? 1 : 0);
    const std::string text = support::printable(foreign) + (ends ? "\n" : "");
    if (!destination.limit) {
        return destination.write(handler, priority, text.c_str());
    }
    writeReport(handler, destination);
    if (priority >= LOG_DEBUG || destination.limit->admits(text, LineLimit::Clock::now())) {
        return destination.write(handler, priority, text.c_str());
    }
    reportWhenDue(handler, destination);
    return 0;
}

// All that there are by now.
void takeDestinations()
{
    for (netsnmp_log_handler *handler = get_logh_head(); handler != nullptr; handler = handler->next) {
        if (handler->handler != writeLine) {
            destinations[handler] = {handler->handler};
            handler->handler = writeLine;
        }
    }
}

} // namespace

void logLine(int priority, const char *line)
{
    snmp_log(priority, "%s\n", support::printable(line).c_str());
}

void openLog(DefaultLog log)
{
    if (log == DefaultLog::warnings) {
        netsnmp_register_loghandler(NETSNMP_LOGHANDLER_STDERR, LOG_WARNING);
    } else if (log == DefaultLog::foreground && !standardErrorIsTheJournal()) {
        snmp_enable_stderrlog();
    } else if (log != DefaultLog::none) {
        snmp_enable_syslog_ident("ipmibd", LOG_DAEMON);
    }
    takeDestinations();
}

LimitedLog::LimitedLog()
{
    for (auto &[handler, destination] : destinations) {
        destination.limit.emplace();
    }
}

LimitedLog::~LimitedLog()
{
    for (auto &[handler, destination] : destinations) {
        writeReport(handler, destination, LineLimit::Clock::now() + LineLimit::period);
        destination.limit.reset();
        if (destination.alarm != 0) {
            snmp_alarm_unregister(std::exchange(destination.alarm, 0));
        }
    }
}

} // namespace ipmib::agent
