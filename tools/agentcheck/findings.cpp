// SPDX-License-Identifier: BSD-3-Clause
// What a check found, in words.
#include "findings.h"

#include <nlohmann/json.hpp>

namespace ipmib::agentcheck
{
namespace
{

constexpr RuleText texts[] = {
#define RULE(name, place, says) {#name, place, says},
#include "rules.def"
#undef RULE
};

} // namespace

const RuleText &textOf(Rule rule)
{
    return texts[static_cast<std::size_t>(rule)];
}

void Report::broken(Rule rule, const Name &name, std::string seen)
{
    if (told_.emplace(rule, objects_.text(name)).second) {
        findings_.push_back({rule, name, std::move(seen)});
    }
}

std::string Report::text() const
{
    constexpr std::size_t shown = 3; // of each rule
    std::string text;
    for (const std::string &fact : facts_) {
        text += fact + "\n";
    }
    for (std::size_t number = 0; number < std::size(texts); ++number) {
        std::size_t seen = 0;
        for (const Finding &finding : findings_) {
            if (finding.rule != static_cast<Rule>(number)) {
                continue;
            }
            if (seen++ == 0) {
                text += std::string("\nBROKEN: ") + texts[number].says + " (" + texts[number].place + ")\n";
            }
            if (seen <= shown) {
                text += "  " + objects_.text(finding.name) + ": " + finding.seen + "\n";
            }
        }
        if (seen > shown) {
            text += "  and " + std::to_string(seen - shown) + " more\n";
        }
    }
    return text;
}

std::string Report::json(const std::string &agent, const std::string &endedEarly) const
{
    nlohmann::ordered_json document = {{"agent", agent}, {"facts", facts_}, {"findings", nlohmann::json::array()}};
    for (const Finding &finding : findings_) {
        const RuleText &rule = texts[static_cast<std::size_t>(finding.rule)];
        document["findings"].push_back({{"rule", rule.name},
                                        {"place", rule.place},
                                        {"says", rule.says},
                                        {"name", objects_.text(finding.name)},
                                        {"oid", host::textOf(finding.name)},
                                        {"seen", finding.seen}});
    }
    if (!endedEarly.empty()) {
        document["endedEarly"] = endedEarly;
    }
    return document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

} // namespace ipmib::agentcheck
