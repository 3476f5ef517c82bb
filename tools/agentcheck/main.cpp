// SPDX-License-Identifier: BSD-3-Clause
// ipmib-agentcheck: says in words which rules of the standards an agent breaks.
#include "agentcheck.h"

#include "host/command_line.h"

#include "support/printable.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>

namespace
{

using namespace ipmib;

constexpr char helpText[] = R"(Usage: ipmib-agentcheck [OPTION]... AGENT

Asks an SNMP agent for the tables of the IP-MIB, the IP-FORWARD-MIB, the IF-MIB, the TCP-MIB and the UDP-MIB, and for the
scalars beside them, in every way that there is to ask, and says what it does not do as the standards say. Nothing is
written.

      --json             write the findings as JSON
      --tables=LIST      look at these tables and groups of scalars alone, with commas between them
      --rows=NUMBER      look at so many rows of a table at the most (default: 200)
      --rate=NUMBER      send so many packets a second at the most (default: 200)
      --settle=SECONDS   wait so long before looking again, twice, at what did not fit together (default: 1); for agents
                         that remember some tables longer than others
      --write            also write, to an instance of each object, the value that it has
      --rules            print all rules, with where they stand, and exit
  -h, --help             print this and exit
      --version          print the version and exit

AGENT and all other options are those of net-snmp's own commands: -v VERSION, -c COMMUNITY, -u USER, -l LEVEL,
-t SECONDS, -r RETRIES and so on, see snmpcmd(1).

Exit status: 0 when no rule is broken, 1 when one is, 2 for a mistake on the command line, 3 when the agent does not
answer, or no longer.
)";

enum ExitStatus { exitNoAnswer = 3 };

struct CommandLine {
    agentcheck::Options options;
    bool json = false;
    std::vector<char *> words; // for the library
};

unsigned readNumber(const std::string &option, std::string_view text)
{
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    constexpr unsigned most = 1000000;
    if (error != std::errc() || end != text.data() + text.size() || number == 0 || number > most) {
        throw host::UsageError(option + ": a number from 1 to " + std::to_string(most));
    }
    return number;
}

std::chrono::milliseconds readSeconds(const std::string &option, std::string_view text)
{
    double seconds = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    constexpr double most = 3600;
    if (error != std::errc() || end != text.data() + text.size() || seconds < 0 || seconds > most) {
        throw host::UsageError(option + ": seconds from 0 to 3600");
    }
    return std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
}

host::UsageError noSuchTable(const std::string &name, const agentcheck::Objects &objects)
{
    std::string names;
    for (const agentcheck::Region &region : objects.regions()) {
        names += names.empty() ? "" : ", ";
        names += region.name;
    }
    return host::UsageError("--tables: there is no " + name + ", but " + names);
}

void readTables(std::string_view list, const agentcheck::Objects &objects, std::set<std::string> &regions)
{
    for (;;) {
        const std::size_t comma = list.find(',');
        const std::string name(list.substr(0, comma));
        if (objects.region(name) == nullptr) {
            throw noSuchTable(name, objects);
        }
        regions.insert(name);
        if (comma == std::string_view::npos) {
            return;
        }
        list.remove_prefix(comma + 1);
    }
}

void printRules()
{
    for (std::size_t number = 0; number < static_cast<std::size_t>(agentcheck::Rule::count_); ++number) {
        const agentcheck::RuleText &rule = agentcheck::textOf(static_cast<agentcheck::Rule>(number));
        std::printf("%s: %s\n    %s\n", rule.name, rule.says, rule.place);
    }
}

// Takes what is this program's own off the words. False when the program is through.
bool readCommandLine(int argc, char **argv, const agentcheck::Objects &objects, CommandLine &line)
{
    line.words = {argv[0]};
    for (int i = 1; i < argc; ++i) {
        const std::string_view word = argv[i];
        const std::string option(word.substr(0, word.find('=')));
        const bool hasValue = option.size() != word.size();
        const auto value = [&]() -> std::string_view {
            if (!hasValue && i + 1 == argc) {
                throw host::UsageError(option + " needs a value");
            }
            return hasValue ? word.substr(option.size() + 1) : std::string_view(argv[++i]);
        };
        if (word == "--help" || word == "-h") {
            std::fputs(helpText, stdout);
            return false;
        }
        if (word == "--version") {
            std::puts("ipmib-agentcheck " IPMIB_VERSION);
            return false;
        }
        if (word == "--rules") {
            printRules();
            return false;
        }
        if (word == "--json") {
            line.json = true;
        } else if (word == "--write") {
            line.options.settings.mayWrite = true;
        } else if (option == "--tables") {
            readTables(value(), objects, line.options.regions);
        } else if (option == "--rows") {
            line.options.settings.rows = readNumber(option, value());
        } else if (option == "--settle") {
            line.options.settings.settleTime = readSeconds(option, value());
        } else if (option == "--rate") {
            line.options.packetsPerSecond = readNumber(option, value());
        } else if (word.starts_with("--")) {
            throw host::UsageError("unknown option " + std::string(word));
        } else {
            line.words.push_back(argv[i]);
        }
    }
    if (line.words.size() == 1) {
        throw host::UsageError("no agent is named; see --help");
    }
    return true;
}

void print(const agentcheck::Report &report, bool json, const std::string &endedEarly)
{
    if (json) {
        std::fputs(report.json(agentcheck::ClientSession::agent(), endedEarly).c_str(), stdout);
        return;
    }
    std::fputs(report.text().c_str(), stdout);
    if (endedEarly.empty()) {
        std::puts(report.findings().empty() ? "\nNo rule is broken." : "\nThe agent breaks rules.");
    }
}

int run(int argc, char **argv)
{
    const agentcheck::Objects objects;
    CommandLine line;
    if (!readCommandLine(argc, argv, objects, line)) {
        return host::exitSuccess;
    }
    const auto words = static_cast<int>(line.words.size());
    line.words.push_back(nullptr);
    agentcheck::ClientSession::readCommandLine(words, line.words.data());
    agentcheck::Report report(objects);
    try {
        agentcheck::checkAgent(line.options, objects, report);
    } catch (const agentcheck::NoAnswer &error) {
        print(report, line.json, error.what());
        std::fprintf(stderr, "ipmib-agentcheck: %s\n", support::printable(error.what()).c_str());
        return exitNoAnswer;
    }
    print(report, line.json, "");
    return report.findings().empty() ? host::exitSuccess : host::exitFailure;
}

} // namespace

int main(int argc, char **argv)
{
    try {
        host::occupyStandardDescriptors();
        return run(argc, argv);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "ipmib-agentcheck: %s\n", support::printable(error.what()).c_str());
        return host::exitUsage;
    }
}
