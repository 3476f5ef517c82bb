// SPDX-License-Identifier: BSD-3-Clause
// Reads the command line with getopt_long; the log options with the parser of the net-snmp library.

#include "options.h"

#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <cstring>

namespace ipmib::agent
{

const char *const helpText = R"(Usage: ipmibd [OPTION]... [LISTENING ADDRESS]...

Serves the IP-MIB over SNMP.

  -f                     stay in the foreground
  -C                     do not read the default configuration files (ipmibd.conf)
  -c FILE[,...]          read these configuration files
  -L LOGOPTION           log to standard output (-Lo), standard error (-Le), a file (-Lf FILE), syslog (-Ls FACILITY),
                         or nowhere (-Ln)
  -p FILE                write the process id to this file
  -x ADDRESS             be a sub-agent of the AgentX master at this address: a path, unix:PATH, tcp:HOST:PORT or
                         tcp6:[ADDRESS]:PORT
      --check            read the configuration, print who serves which table, and exit: with 1 when something is wrong
      --ask "WORDS"      with --check and -x: ask the agent, too, and print how many instances of each table would be
                         gained and lost if it were ours; the words are those of snmpwalk: -v2c -c public localhost
      --device-socket PATH
                         listen on a local socket for `ipmibctl set-device`, which changes a simulated device
      --platform NAME[:ARGUMENT]
                         where the facts come from (default: linux)
      --module PATH      the module to load (default: the one that ipmibd came with)
      --OPTION[=VALUE]   any other long option is handed to the platform
  -h, --help             print this and exit
  -v, --version          print the version and exit

A listening address is written as for snmpd: udp:127.0.0.1:161, udp6:[::1]:161, tcp:10.0.0.1:161. Without one, here or
as agentaddress in the configuration, only the loopback addresses are listened on, at UDP port 161.

Lines of the configuration that say who serves a table, or all others:

  serve TABLE|all auto   as a sub-agent: what the master lacks, and the tables of the IP-MIB; else: serve it; this is the
                         default
  serve TABLE|all take   as a sub-agent: in the place of the master's own rows; else: serve it
  serve TABLE|all off    leave it alone
)";

namespace
{

enum { checkOption = host::firstProgramOption, askOption, deviceSocketOption };

constexpr option longOptions[] = {
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},
    {"check", no_argument, nullptr, checkOption},
    {"ask", required_argument, nullptr, askOption},
    {"device-socket", required_argument, nullptr, deviceSocketOption},
    host::pluginOptions[0],
    host::pluginOptions[1],
    {nullptr, 0, nullptr, 0},
};

// Whether a destination of the log that was asked for could not be opened; the library keeps that to itself.
const char *unopenedLogFile()
{
    for (const netsnmp_log_handler *handler = get_logh_head(); handler != nullptr; handler = handler->next) {
        if (handler->type == NETSNMP_LOGHANDLER_FILE && handler->magic == nullptr) {
            return handler->token;
        }
    }
    return nullptr;
}

// The library prints complaints of its own about what it does not know, hence the checks before it is asked.
void chooseLogging(char *option, int argc, char *const *argv)
{
    const std::string given = std::string("-L") + option;
    if (std::strchr("eEfFoOsSnN", option[0]) == nullptr || option[0] == '\0') {
        throw host::UsageError(given + ": unknown destination of the log");
    }
    if (std::strchr("fFsS", option[0]) != nullptr && option[1] == '\0' && optind >= argc) {
        throw host::UsageError(given + " needs an argument");
    }
    if (snmp_log_options(option, argc, argv) < 0) {
        throw host::UsageError(given + ": unknown destination of the log");
    }
    if (const char *file = unopenedLogFile()) {
        throw std::runtime_error(std::string("cannot write the log file ") + file);
    }
}

} // namespace

std::vector<std::string> splitList(std::string_view list)
{
    std::vector<std::string> items;
    for (;;) {
        const std::size_t comma = list.find(',');
        const std::string_view item = list.substr(0, comma);
        if (!item.empty()) {
            items.emplace_back(item);
        }
        if (comma == std::string_view::npos) {
            return items;
        }
        list.remove_prefix(comma + 1);
    }
}

Options parseOptions(int argc, char *const *argv)
{
    Options options;
    opterr = 0;
    optind = 0; // lets glibc start afresh
    int letter;
    while ((letter = getopt_long(argc, argv, ":fCc:L:p:x:hv", longOptions, nullptr)) != -1) {
        switch (letter) {
        case 'f':
            options.foreground = true;
            break;
        case 'C':
            options.defaultConfiguration = false;
            break;
        case 'c':
            options.configuration = optarg;
            break;
        case 'L':
            chooseLogging(optarg, argc, argv);
            options.loggingChosen = true;
            break;
        case 'p':
            options.pidFile = optarg;
            break;
        case 'x':
            options.master = optarg;
            break;
        case checkOption:
            options.action = Options::Action::check;
            break;
        case askOption:
            options.ask = optarg;
            break;
        case deviceSocketOption:
            options.deviceSocket = optarg;
            break;
        case 'h':
            options.action = Options::Action::help;
            return options;
        case 'v':
            options.action = Options::Action::version;
            return options;
        default:
            host::takePluginOption(letter, argv, options.plugin);
        }
    }
    for (; optind < argc; ++optind) {
        options.listenOn.emplace_back(argv[optind]);
    }
    if (!options.master.empty() && !options.listenOn.empty()) {
        throw host::UsageError("with -x there is nothing to listen on: " + options.listenOn.front());
    }
    if (!options.master.empty() && !options.deviceSocket.empty()) {
        throw host::UsageError("--device-socket goes without -x");
    }
    if (!options.ask.empty() && (options.action != Options::Action::check || options.master.empty())) {
        throw host::UsageError("--ask goes with --check and -x");
    }
    return options;
}

} // namespace ipmib::agent
