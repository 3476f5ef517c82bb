// SPDX-License-Identifier: BSD-3-Clause
// The configuration's lines about contexts: `context NAME ARGUMENT...`, `contexts ARGUMENT...` and
// `contextcommunity COMMUNITY [SOURCE [CONTEXT]]`.
#pragma once

#include "config_line.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace ipmib::agent
{

class ContextSettings
{
  public:
    // COMMUNITY@NAME asks in context NAME, of those whose names match: the name itself, or a beginning and a `*`.
    struct Community {
        std::string community;
        std::string source; // as in a line of com2sec; empty for anywhere
        std::string contexts = "*";

        bool includes(const std::string &context) const;
    };

    static constexpr const char *contextDirective = "context";
    static constexpr const char *contextsDirective = "contexts";
    static constexpr const char *communityDirective = "contextcommunity";

    // From here on the library hands the lines in files of this type to it; wrong ones are complained about there, with
    // file and line, and left aside. One at a time, as the library has it. No directive for communities: null.
    explicit ContextSettings(const char *fileType, const char *context = contextDirective,
                             const char *contexts = contextsDirective, const char *community = communityDirective);

    // The platform's argument by the context's name.
    const std::map<std::string, std::string> &contexts() const { return contexts_; }
    // Arguments of `contexts`, once each.
    const std::vector<std::string> &followed() const { return followed_; }
    const std::vector<Community> &communities() const { return communities_; }
    // Differs whenever the lines have been read anew.
    unsigned version() const { return version_; }

    // Read a line without the directive. Return what is wrong with it, or nothing.
    std::string readContext(const std::string &line);
    std::string readContexts(const std::string &line);
    std::string readCommunity(const std::string &line);
    void forget();

  private:
    std::map<std::string, std::string> contexts_;
    std::vector<std::string> followed_;
    std::vector<Community> communities_;
    unsigned version_ = 0;
    ConfigLine<ContextSettings, &ContextSettings::readContext> contextLine_;
    ConfigLine<ContextSettings, &ContextSettings::readContexts> contextsLine_;
    std::optional<ConfigLine<ContextSettings, &ContextSettings::readCommunity>> communityLine_;
};

} // namespace ipmib::agent
