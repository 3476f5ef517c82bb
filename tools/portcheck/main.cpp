// SPDX-License-Identifier: BSD-3-Clause
// ipmib-portcheck: says in words which promises a platform breaks.
#include "expectation.h"
#include "portcheck.h"

#include "host/command_line.h"

#include "support/printable.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace
{

using namespace ipmib;

constexpr char helpText[] = R"(Usage: ipmib-portcheck [OPTION]...

Calls every service of a platform library as the module does, walks every table through the module, and says which
promises of the contract the platform breaks. A service that hangs or crashes is named, and the check goes on.

      --platform NAME[:ARGUMENT]
                         the platform (default: linux); a NAME with a slash is the path of a library
      --module PATH      the module to load (default: the one that ipmib-portcheck came with)
      --patience SECONDS how long one call may take (default: 10)
      --rows             print the rows that were found, too, one a line, in the order of the services
      --save FILE        write them to a file
      --expect FILE      compare them with a file: with values that were right once, or that a person has written;
                         what a line leaves out may be anything, and kinds without a line are not compared
      --promises         print all promises, with what breaks when they are not kept, and exit
      --OPTION[=VALUE]   any other long option is handed to the platform
  -h, --help             print this and exit
  -v, --version          print the version and exit

Byte order shows on a little-endian machine only: build the port for one, too (its services with the data of the device,
or with made-up data; on x86-64 with the compiler of the machine, for armhf or aarch64 with a cross compiler and qemu-user).

Exit status: 0 when all promises are kept, 1 when one is broken, 2 for a mistake on the command line.
)";

enum { patienceOption = host::firstProgramOption, promisesOption, rowsOption, saveOption, expectOption };

constexpr option longOptions[] = {
    host::pluginOptions[0],
    host::pluginOptions[1],
    {"patience", required_argument, nullptr, patienceOption},
    {"rows", no_argument, nullptr, rowsOption},
    {"save", required_argument, nullptr, saveOption},
    {"expect", required_argument, nullptr, expectOption},
    {"promises", no_argument, nullptr, promisesOption},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},
    {nullptr, 0, nullptr, 0},
};

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
        std::fprintf(stderr, "%s\n", support::printable(line).c_str());
    }
}

std::chrono::milliseconds readPatience(const char *text)
{
    const std::chrono::milliseconds patience(static_cast<long>(std::atof(text) * 1000));
    if (patience.count() <= 0) {
        throw host::UsageError(std::string("--patience: ") + text + " is no number of seconds");
    }
    return patience;
}

struct Rows {
    bool print = false;
    std::string saveTo;
    std::string expected; // path
};

std::string contentOf(const std::string &path)
{
    std::ifstream file(path);
    std::ostringstream content;
    content << file.rdbuf();
    if (!file) {
        throw std::runtime_error(path + ": cannot be read");
    }
    return content.str();
}

void save(const std::string &path, const std::string &content)
{
    std::ofstream file(path);
    file << content;
    file.close();
    if (!file) {
        throw std::runtime_error(path + ": cannot be written");
    }
}

host::ExitStatus check(const portcheck::Options &options, const Rows &rows)
{
    const std::string expected = rows.expected.empty() ? "" : contentOf(rows.expected);
    portcheck::Report report = portcheck::checkPlatform(options);
    if (!rows.saveTo.empty()) {
        save(rows.saveTo, portcheck::expectationOf(report));
    }
    if (!rows.expected.empty()) {
        portcheck::compareRows(report, expected);
    }
    if (rows.print) {
        for (const std::string &row : report.rows) {
            std::puts(row.c_str());
        }
        std::puts("");
    }
    std::fputs(report.text().c_str(), stdout);
    constexpr bool hidesByteOrder = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
    if (hidesByteOrder) {
        std::puts("\nThis processor is big-endian: a field in the wrong byte order does not show here (see --help).");
    }
    std::puts(report.broken.empty() ? "\nEvery promise that can be checked from outside is kept."
                                    : "\nThe platform breaks its promises.");
    return report.broken.empty() ? host::exitSuccess : host::exitFailure;
}

host::ExitStatus run(int argc, char **argv)
{
    portcheck::Options options;
    Rows rows;
    options.plugin.pluginDirectory = host::pluginDirectoryOfProgram(IPMIB_PLUGIN_FROM_BIN);
    options.plugin.log = logLine;
    opterr = 0;
    int answer;
    while ((answer = getopt_long(argc, argv, ":hv", longOptions, nullptr)) != -1) {
        switch (answer) {
        case patienceOption:
            options.patience = readPatience(optarg);
            break;
        case rowsOption:
            rows.print = true;
            break;
        case saveOption:
            rows.saveTo = optarg;
            break;
        case expectOption:
            rows.expected = optarg;
            break;
        case promisesOption:
            printPromises();
            return host::exitSuccess;
        case 'h':
            std::fputs(helpText, stdout);
            return host::exitSuccess;
        case 'v':
            std::puts("ipmib-portcheck " IPMIB_VERSION);
            return host::exitSuccess;
        default:
            host::takePluginOption(answer, argv, options.plugin);
        }
    }
    if (optind < argc) {
        throw host::UsageError(std::string("unexpected argument ") + argv[optind]);
    }
    return check(options, rows);
}

int fail(const std::exception &error, host::ExitStatus status)
{
    std::fprintf(stderr, "ipmib-portcheck: %s\n", support::printable(error.what()).c_str());
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        host::occupyStandardDescriptors();
        return run(argc, argv);
    } catch (const host::UsageError &error) {
        return fail(error, host::exitUsage);
    } catch (const std::exception &error) {
        return fail(error, host::exitFailure);
    }
}
