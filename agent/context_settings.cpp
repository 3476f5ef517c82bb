// SPDX-License-Identifier: BSD-3-Clause
#include "context_settings.h"

#include <algorithm>
#include <sstream>

namespace ipmib::agent
{
namespace
{

constexpr std::size_t longestName = 32; // of a context, as the MIBs have it

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

ContextSettings::ContextSettings(const char *fileType, const char *context, const char *contexts, const char *community)
    : contextLine_(*this, fileType, context, "NAME ARGUMENT..."),
      contextsLine_(*this, fileType, contexts, "ARGUMENT...")
{
    if (community != nullptr) {
        communityLine_.emplace(*this, fileType, community, "COMMUNITY [SOURCE [CONTEXT]]");
    }
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
