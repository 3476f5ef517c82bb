// SPDX-License-Identifier: BSD-3-Clause
// What a walk printed, and what it must be like.
#pragma once

#include "e2e/command.h"

#include <cstdint>
#include <set>

namespace ipmib::e2e
{

using Identifier = std::vector<std::uint64_t>;

// Of a row ".1.3.6 = Counter32: 5".
Identifier identifierOf(const std::string &row);

void expectIncreasing(const Words &rows);

bool holds(const Words &rows, const std::string &row);

// Those that lie below the identifier, which begins with a dot.
Words rowsBelow(const Words &rows, const std::string &root);

std::set<Identifier> identifiersOf(const Words &rows);

} // namespace ipmib::e2e
