// SPDX-License-Identifier: BSD-3-Clause
// What a check found: rules that the agent breaks, and facts about what was looked at.
#pragma once

#include "objects.h"

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace ipmib::agentcheck
{

enum class Rule : std::uint8_t {
#define RULE(name, place, says) name,
#include "rules.def"
#undef RULE
    count_
};

struct RuleText {
    const char *name;
    const char *place; // RFC and clause
    const char *says;
};
const RuleText &textOf(Rule rule);

struct Finding {
    Rule rule;
    Name name; // of the variable
    std::string seen;
};

class Report
{
  public:
    explicit Report(const Objects &objects) : objects_(objects) {}

    // Of one variable each rule is told once.
    void broken(Rule rule, const Name &name, std::string seen);
    void fact(std::string line) { facts_.push_back(std::move(line)); }

    const std::vector<Finding> &findings() const { return findings_; }
    // For people, and for programs.
    std::string text() const;
    std::string json(const std::string &agent, const std::string &endedEarly) const;

  private:
    const Objects &objects_;
    std::vector<Finding> findings_;
    std::set<std::pair<Rule, std::string>> told_;
    std::vector<std::string> facts_;
};

} // namespace ipmib::agentcheck
