// SPDX-License-Identifier: BSD-3-Clause
// What all programs with a platform and a module have in common: command line, exit status, standard descriptors.
#include "command_line.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <system_error>

namespace ipmib::host
{
namespace
{

std::pair<std::string, std::string> splitLongOption(std::string_view argument)
{
    argument.remove_prefix(std::string_view("--").size());
    const std::size_t equals = argument.find('=');
    if (equals == std::string_view::npos) {
        return {std::string(argument), ""};
    }
    return {std::string(argument.substr(0, equals)), std::string(argument.substr(equals + 1))};
}

} // namespace

void occupyStandardDescriptors()
{
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The lowest number that is free is taken. The other way round, so that a program sees that its output is lost.
        if (fcntl(standard, F_GETFD) < 0 && open("/dev/null", standard == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0) {
            throw std::system_error(errno, std::generic_category(), "cannot open /dev/null");
        }
    }
}

void takePluginOption(int answer, char *const *argv, PluginOptions &options)
{
    const std::string_view argument = argv[optind - 1];
    switch (answer) {
    case platformOption:
        options.platform = optarg;
        return;
    case moduleOption:
        options.module = optarg;
        return;
    case ':':
        throw UsageError("option " + std::string(argument) + " needs an argument");
    default:
        break;
    }
    if (optopt == 0) { // a long option that is not the program's
        options.platformOptions.push_back(splitLongOption(argument));
    } else if (optopt < platformOption && !argument.starts_with("--")) {
        throw UsageError(std::string("unknown option -") + static_cast<char>(optopt));
    } else {
        throw UsageError("option " + std::string(argument) + " takes no argument");
    }
}

} // namespace ipmib::host
