// SPDX-License-Identifier: BSD-3-Clause
// ipmibd: serves the IP-MIB of this machine over SNMP.

#include "log.h"
#include "options.h"
#include "run_modes.h"
#include "snmp_library.h"

#include "support/printable.h"

#include <cstdio>
#include <exception>
#include <string>

namespace
{

using namespace ipmib;

// Errors go to the terminal, wherever the log goes.
int fail(const std::exception &error, host::ExitStatus status)
{
    std::fprintf(stderr, "ipmibd: %s\n", support::printable(error.what()).c_str());
    return status;
}

int run(agent::Options options)
{
    switch (options.action) {
    case agent::Options::Action::help:
        std::fputs(agent::helpText, stdout);
        return host::exitSuccess;
    case agent::Options::Action::version:
        std::printf("ipmibd %s (net-snmp %s)\n", IPMIB_VERSION, agent::SnmpLibrary::version());
        return host::exitSuccess;
    case agent::Options::Action::check:
    case agent::Options::Action::run:
        break;
    }
    const bool isCheck = options.action == agent::Options::Action::check;
    agent::openLog(options.loggingChosen ? agent::DefaultLog::none
                   : isCheck             ? agent::DefaultLog::warnings
                   : options.foreground  ? agent::DefaultLog::foreground
                                         : agent::DefaultLog::background);
    options.plugin.pluginDirectory = host::pluginDirectoryOfProgram(IPMIB_PLUGIN_FROM_SBIN);
    options.plugin.log = agent::logLine;
    if (isCheck) {
        return agent::check(options) ? host::exitSuccess : host::exitFailure;
    }
    if (options.master.empty()) {
        agent::serveStandalone(options);
    } else {
        agent::serveAsSubagent(options);
    }
    return host::exitSuccess;
}

} // namespace

int main(int argc, char **argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // the log may go there, into a pipe
    try {
        host::occupyStandardDescriptors();
        return run(agent::parseOptions(argc, argv));
    } catch (const host::UsageError &error) {
        return fail(error, host::exitUsage);
    } catch (const std::exception &error) {
        return fail(error, host::exitFailure);
    }
}
