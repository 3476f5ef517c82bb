// SPDX-License-Identifier: BSD-3-Clause
#include "commands.h"

#include "near_names.h"
#include "set_device.h"
#include "view_names.h"

#include <algorithm>
#include <string_view>

namespace ipmib::cli
{
namespace
{

constexpr Usage ofShow[] = {
    {"[show] VIEW [[dev] INTERFACE]",
     "a table, of all interfaces or of one; VIEW is neighbours, addresses, prefixes, routers,\n"
     "interfaces, statistics, icmp, advertisements or contexts, the beginning of such a word, or what\n"
     "`ip` says: neigh, addr, route, link; arp is neighbours of IPv4, ndp of IPv6"},
    {"[show] routes [PREFIX]", "all routes, or those within a prefix"},
    {"[show] route ADDRESS", "the routes with the longest prefix that an address lies in"},
    {"[show] connections [WHAT]", "TCP and UDP: tcp, udp, listeners, or a port"},
    {"[show] statistics NAME", "all counters of an interface, or of the \"system\""},
};
constexpr Usage ofWatch[] = {
    {"watch statistics [NAME], watch interfaces, watch icmp",
     "how much the counters grow a second, again and again; where there are more rows than\n"
     "lines, the busiest"},
    {"watch VIEW", "what comes, goes and changes"},
};
constexpr Usage ofGet[] = {
    {"get OBJECT...", "values; an OBJECT is written 1.3.6.1.2.1.4.26.0, ipv6IpDefaultHopLimit,\n"
                      "ipIfStatsHCInOctets.2.3 or ipIfStatsHCInOctets[ipv6][eth0]"},
};
constexpr Usage ofWalk[] = {{"walk OBJECT", "all values below an object"}};
constexpr Usage ofTree[] = {
    {"tree [OBJECT]", "the objects, with their types, access, and whether they are served"},
};
constexpr Usage ofExport[] = {{"export", "all values of the device, as lines of an snmprec file"}};
constexpr Usage ofImport[] = {
    {"import WALK", "a scenario of the device whose walk stands in a file: what snmpwalk -On prints, or an\n"
                    "snmprec file; /dev/stdin for a pipe"},
};
constexpr Usage ofSetDevice[] = {
    {"set-device line NAME up|down", "of a simulated device that ipmibd serves: an interface goes up or down"},
    {"set-device rate|counter NAME COUNTER VALUE",
     "how fast a counter of an interface or of the \"system\" grows, and where it is now:\n"
     "eth0 ipv6.inOctets 5000"},
    {"set-device fault NAME on|off|JSON", "what goes wrong with its answers, see ipmib-scenario(5)"},
    {"set-device reboot [SECONDS]", "it begins anew, and is away for so long"},
    {"set-device CHANGE, set-device -", "changes as JSON, here or from standard input, one or a list"},
};
constexpr Usage ofCompletion[] = {{"completion SHELL", "what makes bash, zsh or fish complete these words"}};

constexpr Command table[] = {
    {"show", "a table, once", show, nullptr, Operands::views, ofShow},
    {"watch", "rates, or what comes and goes", watch, nullptr, Operands::views, ofWatch},
    {"get", "single values", get, nullptr, Operands::objects, ofGet},
    {"walk", "all values below an object", walk, nullptr, Operands::objects, ofWalk},
    {"tree", "the objects, and which are served", drawTree, nullptr, Operands::objects, ofTree},
    {"export", "all values of the device, as a file", exportWalk, nullptr, Operands::nothing, ofExport},
    {"import", "a scenario made of a walk", nullptr, importWalk, Operands::files, ofImport},
    {"set-device", "change a simulated device", nullptr, setDevice, Operands::changes, ofSetDevice},
    {"completion", "a script for a shell", nullptr, writeCompletionScript, Operands::shells, ofCompletion},
};

// One entry of a list: what stands on the left, and behind it, or below when it is long, what that is.
std::string entry(std::string left, std::string_view text)
{
    constexpr std::size_t place = 27;
    left.insert(0, "  ");
    left += left.size() + 2 > place ? "\n" + std::string(place, ' ') : std::string(place - left.size(), ' ');
    for (const char letter : text) {
        left += letter;
        left += letter == '\n' ? std::string(place, ' ') : "";
    }
    return left + "\n";
}

std::string leftOf(const OptionText &option)
{
    std::string left = option.letter == 0 ? "    " : std::string("-") + option.letter;
    if (option.name != nullptr) {
        left += (option.letter == 0 ? "--" : ", --") + std::string(option.name);
    }
    const std::string argument = option.argumentName;
    return left + (option.argument == optional_argument ? "[=" + argument + "]"
                   : argument.empty()                   ? ""
                                                        : " " + argument);
}

} // namespace

std::span<const Command> commands()
{
    return table;
}

const Command *commandNamed(const std::string &word)
{
    const std::string_view wanted = word == "monitor" ? "watch" : std::string_view(word); // `ip` says it like that
    const auto exact = std::ranges::find(table, wanted, &Command::name);
    if (exact != std::end(table)) {
        return &*exact;
    }
    const Command *found = nullptr;
    for (const Command &command : table) {
        if (!word.empty() && std::string_view(command.name).starts_with(word)) {
            if (found != nullptr) {
                throw host::UsageError("\"" + word + "\" may be " + found->name + " or " + command.name);
            }
            found = &command;
        }
    }
    return found;
}

std::string noSuchCommand(const std::string &word)
{
    std::vector<std::string> words = viewWords();
    for (const Command &command : table) {
        words.emplace_back(command.name);
    }
    const std::string meant = didYouMean(word, words);
    return "there is no command \"" + word + "\"" + (meant.empty() ? "; ipmibctl --help lists them" : meant);
}

std::string helpText()
{
    std::string text = "Usage: ipmibctl [OPTION]... COMMAND\n\n"
                       "Shows the IP-MIB of this machine, or of a simulated device, without SNMP.\n\n";
    for (const Command &command : table) {
        for (const Usage &usage : command.usages) {
            text += entry(usage.synopsis, usage.text);
        }
    }
    text += "\n";
    for (const OptionText &option : optionTexts()) {
        text += entry(leftOf(option), option.text);
    }
    return text + entry("    --OPTION[=VALUE]", "any other long option is handed to the platform");
}

} // namespace ipmib::cli
