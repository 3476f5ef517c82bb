// SPDX-License-Identifier: BSD-3-Clause
// What the tree's syntax records say: lists without their indirections, and whether a value obeys.
#pragma once

#include "message.h"
#include "resolver.h"

#include <ipmib/mib_tree.h>

#include <optional>
#include <span>

namespace ipmib::host
{

// The ranges of a syntax, of values or of lengths; empty when it has none.
std::span<const MibRangeItem> rangesOf(const MibSyntax &syntax);
// The named numbers; empty when it has none.
std::span<const MibEnumItem> labelsOf(const MibSyntax &syntax);

// Whether a number, or a number of octets, is one of the named numbers, or within the ranges.
bool isAllowed(const MibSyntax &syntax, std::uint64_t number);

// The module's value as it leaves on the wire; empty when its type, range, label or length is not what the syntax
// declares.
std::optional<Value> checkedValue(const MibSyntax &syntax, const ReplyValue &value);

} // namespace ipmib::host
