// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl: the IP-MIB on the terminal.
#include "commands.h"
#include "output.h"

#include <ipmib/platform_hooks.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <stdexcept>

namespace
{

using namespace ipmib;

struct Command {
    const char *name;
    int (*run)(cli::Session &, const cli::Options &, const cli::Words &);
};
constexpr Command commands[] = {
    {"show", cli::show}, {"watch", cli::watch}, {"get", cli::get}, {"walk", cli::walk}, {"tree", cli::drawTree},
};

int fail(const std::exception &error, host::ExitStatus status)
{
    cli::complain(error.what());
    return status;
}

// What the platform and the resolver complain about; what they merely tell is of no interest to somebody who looks.
void logLine(int priority, const char *line)
{
    if (priority <= IPMIB_LOG_WARNING) {
        cli::complain(line);
    }
}

int run(cli::Options options)
{
    switch (options.action) {
    case cli::Options::Action::help:
        std::fputs(cli::helpText, stdout);
        return host::exitSuccess;
    case cli::Options::Action::version:
        std::printf("ipmibctl %s\n", IPMIB_VERSION);
        return host::exitSuccess;
    case cli::Options::Action::run:
        break;
    }
    if (options.words.size() == 1 && options.words.front() == "help") {
        std::fputs(cli::helpText, stdout);
        return host::exitSuccess;
    }
    if (options.words.empty()) {
        throw host::UsageError("a command is missing; ipmibctl --help lists them");
    }
    const auto command =
        std::ranges::find_if(commands, [&options](const Command &each) { return each.name == options.words.front(); });
    if (command == std::end(commands)) {
        throw host::UsageError("there is no command \"" + options.words.front() + "\"; ipmibctl --help lists them");
    }
    if (options.version != cli::Version::both && command->run != cli::show && command->run != cli::watch) {
        throw host::UsageError("-4 and -6 are for show and watch");
    }
    options.plugin.pluginDirectory = host::pluginDirectoryOfProgram(IPMIB_PLUGIN_FROM_BIN);
    options.plugin.log = logLine;
    cli::Session session(options.plugin);
    return command->run(session, options, {options.words.begin() + 1, options.words.end()});
}

// A full disk is no success.
int withAllWritten(int status)
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error(std::string("cannot write: ") + std::strerror(errno));
    }
    return status;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        host::occupyStandardDescriptors();
        return withAllWritten(run(cli::parseOptions(argc, argv)));
    } catch (const host::UsageError &error) {
        return fail(error, host::exitUsage);
    } catch (const std::exception &error) {
        return fail(error, host::exitFailure);
    }
}
