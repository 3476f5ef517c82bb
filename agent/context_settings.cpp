// SPDX-License-Identifier: BSD-3-Clause
// The library's parsers get no pointer of ours, hence the one that is in force.

#include "context_settings.h"

#include "net_snmp.h"
#include "snmp_library.h"

#include <algorithm>
#include <sstream>

namespace ipmib::agent
{
namespace
{

constexpr std::size_t longestName = 32; // of a context, as the MIBs have it

ContextSettings *inForce = nullptr;

template <std::string (ContextSettings::*read)(const std::string &)>
void parseLine(const char *directive, char *line)
{
    const std::string mistake = (inForce->*read)(line);
    if (!mistake.empty()) {
        netsnmp_config_error("%s: %s", directive, mistake.c_str());
    }
}

void forgetLines()
{
    inForce->forget();
}

struct Directive {
    const char *word;
    void (*parse)(const char *, char *);
    void (*forget)();
    const char *help;
};

constexpr Directive directives[] = {
    {"context", parseLine<&ContextSettings::readContext>, forgetLines, "NAME ARGUMENT..."},
    {"contexts", parseLine<&ContextSettings::readContexts>, nullptr, "ARGUMENT..."},
    {"contextcommunity", parseLine<&ContextSettings::readCommunity>, nullptr, "COMMUNITY [SOURCE [CONTEXT]]"},
};

// The words of a line with a space between them.
std::string rest(std::istringstream &words)
{
    std::string text;
    for (std::string word; words >> word;) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

} // namespace

ContextSettings::ContextSettings()
{
    inForce = this;
    for (const Directive &each : directives) {
        register_config_handler(SnmpLibrary::applicationName, each.word, each.parse, each.forget, each.help);
    }
}

ContextSettings::~ContextSettings()
{
    for (const Directive &each : directives) {
        unregister_config_handler(SnmpLibrary::applicationName, each.word);
    }
    inForce = nullptr;
}

bool ContextSettings::Community::includes(const std::string &context) const
{
    return contexts.ends_with('*') ? context.starts_with(contexts.substr(0, contexts.size() - 1)) : context == contexts;
}

void ContextSettings::forget()
{
    contexts_.clear();
    followed_.clear();
    communities_.clear();
    ++version_;
}

std::string ContextSettings::readContext(const std::string &line)
{
    std::istringstream words(line);
    std::string name;
    words >> name;
    const std::string argument = rest(words);
    if (argument.empty()) {
        return "needs a name and what the platform shall show under it";
    }
    if (name.size() > longestName) {
        return "\"" + name + "\" is longer than " + std::to_string(longestName) + " bytes";
    }
    if (!contexts_.emplace(name, argument).second) {
        return "there is a context \"" + name + "\" already";
    }
    return "";
}

std::string ContextSettings::readContexts(const std::string &line)
{
    std::istringstream words(line);
    const std::string argument = rest(words);
    if (argument.empty()) {
        return "needs to say which";
    }
    if (std::ranges::find(followed_, argument) == followed_.end()) {
        followed_.push_back(argument);
    }
    return "";
}

std::string ContextSettings::readCommunity(const std::string &line)
{
    std::istringstream words(line);
    Community community;
    std::string tooMuch;
    if (!(words >> community.community)) {
        return "needs a community";
    }
    words >> community.source >> community.contexts >> tooMuch;
    if (community.contexts.empty()) {
        community.contexts = "*";
    }
    if (!tooMuch.empty()) {
        return "\"" + tooMuch + "\" is one word too many";
    }
    communities_.push_back(community);
    return "";
}

} // namespace ipmib::agent
