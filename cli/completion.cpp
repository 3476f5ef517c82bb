// SPDX-License-Identifier: BSD-3-Clause
#include "completion.h"

#include "commands.h"
#include "table_reader.h"
#include "view_names.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <optional>

namespace ipmib::cli
{
namespace
{

class Candidates
{
  public:
    explicit Candidates(std::string begun) : begun_(std::move(begun)) {}

    void add(const std::string &word, const std::string &about = "") const
    {
        if (word.starts_with(begun_)) {
            std::printf("%s%s%s\n", word.c_str(), about.empty() ? "" : "\t", about.c_str());
        }
    }

  private:
    std::string begun_;
};

// The command line as far as it is written; nothing of it when it is wrong so far.
Options optionsOf(std::vector<std::string> words)
{
    words.insert(words.begin(), "ipmibctl");
    std::vector<char *> arguments;
    for (std::string &word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    try {
        return parseOptions(static_cast<int>(words.size()), arguments.data());
    } catch (const host::UsageError &) {
        return {};
    }
}

// Behind "--sort" and its like stands a value.
const OptionText *optionAwaiting(const std::vector<std::string> &words)
{
    for (const OptionText &option : optionTexts()) {
        if (!words.empty() && option.name != nullptr && option.argument == required_argument &&
            words.back() == "--" + std::string(option.name)) {
            return &option;
        }
    }
    return nullptr;
}

void addOptions(const Candidates &candidates)
{
    for (const OptionText &option : optionTexts()) {
        const std::string about = std::string(option.text).substr(0, std::string(option.text).find('\n'));
        if (option.name == nullptr) {
            candidates.add(std::string("-") + option.letter, about);
        } else {
            candidates.add("--" + std::string(option.name), about);
        }
    }
    for (const char *when : {"auto", "always", "never"}) {
        candidates.add(std::string("--color=") + when);
    }
}

void addViews(const Candidates &candidates)
{
    for (const ViewName &name : viewNames()) {
        if (name.summary != nullptr) {
            candidates.add(name.word, name.summary);
        }
    }
}

std::optional<ViewRequest> requestOf(const Words &words)
{
    try {
        return parseViewRequest("show", words);
    } catch (const host::UsageError &) {
        return std::nullopt;
    }
}

void addColumns(const Words &words, const Candidates &candidates, const char *behind)
{
    const auto request = words.empty() ? std::nullopt : requestOf(words);
    for (const ListingColumn &column : request ? request->view->columns : std::span<const ListingColumn>()) {
        candidates.add(column.key + std::string(behind), column.heading);
    }
}

void addOperands(const Words &words, const Options &options, const Candidates &candidates)
{
    const bool isNamed = words.back() == "dev";
    const auto request = requestOf(isNamed ? Words(words.begin(), words.end() - 1) : words);
    if (!request || !(request->argument + request->interface).empty()) {
        return;
    }
    const bool isOfAddresses = request->view == &routesView || request->view == &routeView;
    if (request->view == &icmpView || request->view == &contextsView) {
        return;
    }
    if (request->view == &statisticsView && !isNamed) {
        candidates.add("system", "all interfaces together");
    }
    if (request->view == &connectionsView) {
        for (const char *const what : {"tcp", "udp", "listeners"}) {
            candidates.add(what, "");
        }
        return;
    }
    if (!isNamed) {
        candidates.add("dev", "of one interface");
    }
    if (isNamed || !isOfAddresses) {
        LocalDevice device(options.plugin);
        for (const std::string &name : device.interfaceNames()) {
            candidates.add(name, "interface");
        }
    }
}

void addObjects(const Options &options, const Candidates &candidates)
{
    LocalDevice device(options.plugin);
    for (const Object &object : device.tree().objects()) {
        candidates.add(object.node->pszName, object.isServed ? "served" : "");
    }
}

void addChanges(const Words &words, const Candidates &candidates)
{
    if (words.empty()) {
        for (const char *what : {"line", "rate", "counter", "fault", "reboot"}) {
            candidates.add(what);
        }
    } else if (words[0] == "fault" && words.size() == 1) {
        for (const char *fault :
             {"silence", "delay", "duplicate", "truncate", "genErr", "tooBig", "wrongType", "notIncreasing"}) {
            candidates.add(fault);
        }
    } else if (words[0] == "fault" && words.size() == 2) {
        candidates.add("on");
        candidates.add("off");
    } else if (words[0] == "line" && words.size() == 2) {
        candidates.add("up");
        candidates.add("down");
    }
}

void addCommands(const Candidates &candidates)
{
    for (const Command &command : commands()) {
        candidates.add(command.name, command.summary);
    }
    addViews(candidates);
}

void addFor(const Command *command, const Words &words, const Options &options, const Candidates &candidates)
{
    const Operands operands = command == nullptr ? Operands::views : command->operands;
    if (operands == Operands::objects) {
        addObjects(options, candidates);
    } else if (operands == Operands::files || operands == Operands::nothing) {
        // the shells offer files by themselves
    } else if (operands == Operands::changes) {
        addChanges(words, candidates);
    } else if (operands == Operands::shells) {
        for (const std::string &shell : shellNames()) {
            candidates.add(shell);
        }
    } else if (words.empty()) {
        addViews(candidates);
    } else {
        addOperands(words, options, candidates);
    }
}

} // namespace

void writeCandidates(std::vector<std::string> words, const std::string &pluginDirectory)
{
    const Candidates candidates(words.empty() ? "" : words.back());
    const bool isOption = !words.empty() && words.back().starts_with('-');
    if (!words.empty()) {
        words.pop_back();
    }
    const OptionText *awaiting = optionAwaiting(words);
    if (awaiting != nullptr) {
        words.pop_back();
    }
    Options options = optionsOf(words);
    options.plugin.pluginDirectory = pluginDirectory;
    options.plugin.log = [](int, const char *) {};
    Words behind = options.words;
    try {
        const Command *command = behind.empty() ? nullptr : commandNamed(behind.front());
        if (command != nullptr) {
            behind.erase(behind.begin());
        }
        const std::string option = awaiting == nullptr ? "" : awaiting->name;
        if (option == "platform") {
            candidates.add("linux", "this machine");
            candidates.add("simulated:", "a device from a scenario");
        } else if (option == "sort" || option == "filter") {
            addColumns(behind, candidates, option == "sort" ? "" : "=");
        } else if (awaiting == nullptr && isOption) {
            addOptions(candidates);
        } else if (awaiting == nullptr && options.words.empty()) {
            addCommands(candidates);
        } else if (awaiting == nullptr) {
            addFor(command, behind, options, candidates);
        }
    } catch (const std::exception &) { // what is wrong has no continuation; it is complained about when it is run
    }
}

} // namespace ipmib::cli
