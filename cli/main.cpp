// SPDX-License-Identifier: BSD-3-Clause
// ipmibctl: the IP-MIB on the terminal.
#include "commands.h"
#include "completion.h"
#include "near_names.h"
#include "output.h"
#include "view_names.h"

#include <ipmib/platform_hooks.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <stdexcept>

namespace
{

using namespace ipmib;

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

// The platform refuses an option that it does not know, which may be one of ours, mistyped.
[[noreturn]] void refuseWithHint(const host::UsageError &error, const cli::Options &options)
{
    const std::string text = error.what();
    for (const auto &[name, value] : options.plugin.platformOptions) {
        std::vector<std::string> names;
        for (const cli::OptionText &option : cli::optionTexts()) {
            names.push_back("--" + std::string(option.name == nullptr ? "" : option.name));
        }
        const std::string meant = cli::didYouMean("--" + name, names);
        if (!meant.empty() && text.find("--" + name) != std::string::npos) {
            throw host::UsageError("there is no option --" + name + meant);
        }
    }
    throw host::UsageError(text);
}

int runOnDevice(const cli::Command &command, const cli::Options &options, const cli::Words &words)
{
    std::optional<cli::LocalDevice> device;
    try {
        device.emplace(options.plugin);
    } catch (const host::UsageError &error) {
        refuseWithHint(error, options);
    }
    device->select(options.context);
    return command.run(*device, options, words);
}

int writeHelp()
{
    std::fputs(cli::helpText().c_str(), stdout);
    return host::exitSuccess;
}

int run(cli::Options options)
{
    switch (options.action) {
    case cli::Options::Action::help:
        return writeHelp();
    case cli::Options::Action::version:
        std::printf("ipmibctl %s\n", IPMIB_VERSION);
        return host::exitSuccess;
    case cli::Options::Action::run:
        break;
    }
    cli::Words words = options.words;
    if (words.empty()) {
        throw host::UsageError("a command is missing; ipmibctl --help lists them");
    }
    if (words.size() == 1 && words.front() == "help") {
        return writeHelp();
    }
    const cli::Command *command = cli::commandNamed(words.front());
    if (command != nullptr) {
        words.erase(words.begin());
    } else if (cli::isViewWord(words.front())) { // "neigh" is "show neigh"
        command = &cli::commands().front();
    } else {
        throw host::UsageError(cli::noSuchCommand(words.front()));
    }
    const bool isOfViews = command->operands == cli::Operands::views;
    if (!isOfViews && options.version != cli::Version::both) {
        throw host::UsageError("-4 and -6 are for show and watch");
    }
    if (!isOfViews && (!options.sort.empty() || !options.filters.empty())) {
        throw host::UsageError("--sort and --filter are for show and watch");
    }
    options.plugin.pluginDirectory = host::pluginDirectoryOfProgram(IPMIB_PLUGIN_FROM_BIN);
    options.plugin.log = logLine;
    if (command->run == nullptr) {
        return command->runAlone(options, words);
    }
    return runOnDevice(*command, options, words);
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
        if (argc > 1 && argv[1] == cli::completionQuestion) {
            cli::writeCandidates({argv + 2, argv + argc}, host::pluginDirectoryOfProgram(IPMIB_PLUGIN_FROM_BIN));
            return withAllWritten(host::exitSuccess);
        }
        return withAllWritten(run(cli::parseOptions(argc, argv)));
    } catch (const host::UsageError &error) {
        return fail(error, host::exitUsage);
    } catch (const std::exception &error) {
        return fail(error, host::exitFailure);
    }
}
