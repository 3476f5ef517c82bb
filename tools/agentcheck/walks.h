// SPDX-License-Identifier: BSD-3-Clause
// Ways to read the instances of a region. All find the same ones, unless the agent is wrong or its rows change.
#pragma once

#include "exchange.h"

#include <functional>

namespace ipmib::agentcheck
{

struct Walk {
    Values values;
    bool isCut = false;    // a column has more rows than are looked at
    bool isBroken = false; // something was not found, and the report says why
};

class Walker
{
  public:
    // At most so many rows of a column are looked at. All outlive it.
    Walker(Exchange &exchange, Report &report, std::size_t rows) : exchange_(exchange), report_(report), rows_(rows) {}

    Walk byGetNext(const Region &region);
    Walk byGetBulk(const Region &region, int maxRepetitions);
    // A row in a packet, or a few where it has many columns.
    Walk sideBySide(const Region &region);

  private:
    using Step = std::function<std::vector<Variable>(const Name &)>;
    Walk walk(const Region &region, const Step &step);
    bool isSuccessor(const Name &asked, const Variable &found);

    Exchange &exchange_;
    Report &report_;
    std::size_t rows_;
};

} // namespace ipmib::agentcheck
