// SPDX-License-Identifier: BSD-3-Clause
// ipmib-portcheck: says in words which promises a platform breaks.
#include "portcheck.h"

#include <getopt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

namespace
{

using namespace ipmib;

enum ExitStatus { exitKept = 0, exitBroken = 1, exitUsage = 2 };

constexpr char helpText[] = R"(Usage: ipmib-portcheck [OPTION]...

Calls every service of a platform library as the module does, walks every table through the module, and says which
promises of the contract the platform breaks. A service that hangs or crashes is named, and the check goes on.

      --platform NAME[:ARGUMENT]
                         the platform (default: linux); a NAME with a slash is the path of a library
      --module PATH      the module to load (default: the one that ipmib-portcheck came with)
      --patience SECONDS how long one call may take (default: 10)
      --promises         print all promises, with what breaks when they are not kept, and exit
      --OPTION[=VALUE]   any other long option is handed to the platform
  -h, --help             print this and exit
  -v, --version          print the version and exit

Exit status: 0 when all promises are kept, 1 when one is broken, 2 for a mistake on the command line.
)";

constexpr option longOptions[] = {
    {"platform", required_argument, nullptr, 'P'},
    {"module", required_argument, nullptr, 'M'},
    {"patience", required_argument, nullptr, 'T'},
    {"promises", no_argument, nullptr, 'L'},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},
    {nullptr, 0, nullptr, 0},
};

int usageError(const std::string &message)
{
    std::fprintf(stderr, "ipmib-portcheck: %s\n", message.c_str());
    return exitUsage;
}

void printPromises()
{
    for (std::size_t number = 0; number < static_cast<std::size_t>(portcheck::Promise::count); ++number) {
        const portcheck::PromiseText &text = portcheck::textOf(static_cast<portcheck::Promise>(number));
        std::printf("%s\n    else %s\n", text.promised, text.breaks);
    }
}

void logLine(int priority, const char *line)
{
    if (priority <= IPMIB_LOG_WARNING) {
        std::fprintf(stderr, "%s\n", line);
    }
}

int check(const portcheck::Options &options)
{
    const portcheck::Report report = portcheck::checkPlatform(options);
    std::fputs(report.text().c_str(), stdout);
    std::puts(report.broken.empty() ? "\nEvery promise that can be checked from outside is kept."
                                    : "\nThe platform breaks its promises.");
    return report.broken.empty() ? exitKept : exitBroken;
}

} // namespace

int main(int argc, char **argv)
{
    portcheck::Options options;
    options.plugin.pluginDirectory = host::pluginDirectoryOfProgram(IPMIB_PLUGIN_FROM_BIN);
    options.plugin.log = logLine;
    opterr = 0;
    int letter;
    while ((letter = getopt_long(argc, argv, ":hv", longOptions, nullptr)) != -1) {
        switch (letter) {
        case 'P':
            options.plugin.platform = optarg;
            break;
        case 'M':
            options.plugin.module = optarg;
            break;
        case 'T':
            options.patience = std::chrono::milliseconds(static_cast<long>(std::atof(optarg) * 1000));
            if (options.patience.count() <= 0) {
                return usageError(std::string("--patience: ") + optarg + " is no number of seconds");
            }
            break;
        case 'L':
            printPromises();
            return exitKept;
        case 'h':
            std::fputs(helpText, stdout);
            return exitKept;
        case 'v':
            std::puts("ipmib-portcheck " IPMIB_VERSION);
            return exitKept;
        case ':':
            return usageError(std::string("option ") + argv[optind - 1] + " needs an argument");
        default: {
            const char *argument = argv[optind - 1];
            if (std::strncmp(argument, "--", 2) != 0 || optopt != 0) {
                return usageError(std::string("unknown option ") + argument);
            }
            const std::string name(argument + 2, std::strcspn(argument + 2, "="));
            const char *value = std::strchr(argument, '=');
            options.plugin.platformOptions.emplace_back(name, value == nullptr ? "" : value + 1);
        }
        }
    }
    if (optind < argc) {
        return usageError(std::string("unexpected argument ") + argv[optind]);
    }
    try {
        return check(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "ipmib-portcheck: %s\n", error.what());
        return exitBroken;
    }
}
