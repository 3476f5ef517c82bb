// SPDX-License-Identifier: BSD-3-Clause
// Finds the row that follows an arbitrary instance identifier of a table.
#pragma once

#include "exchange.h"
#include "oid.h"

#include <cstdint>
#include <span>

namespace ipmib::host
{

class SuccessorSearch
{
  public:
    explicit SuccessorSearch(Exchange &exchange) : exchange_(exchange) {}

    // Where to search from: the instance, empty for the first row; a row that equals it counts when it is inclusive.
    struct From {
        OidView instance;
        bool inclusive;
    };

    // The first row behind. When one is answered, the exchange holds its values for the parameters that are wanted.
    Outcome find(Table &table, From from, std::span<const std::uint32_t> wanted);

    // What was found.
    const RowKey &row() const { return row_; }
    OidView instance() const { return instance_.view(); }
    // Why an answer is unusable, or why the search stopped although the module had not ended it; else null.
    const char *problem() const { return problem_; }

  private:
    Outcome ask(const RowKey *key);
    Outcome search();
    Outcome goOn();
    bool isBehind() const;

    Exchange &exchange_;
    Table *table_ = nullptr;
    From from_{};
    std::span<const std::uint32_t> wanted_;
    RowKey row_;
    Oid instance_;
    const char *problem_ = nullptr;
};

} // namespace ipmib::host
