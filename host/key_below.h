// SPDX-License-Identifier: BSD-3-Clause
// From where to ask for the row that follows an arbitrary identifier: a module is asked with whole keys only, so an
// identifier that breaks off, is too long or out of range becomes a key below it.
#pragma once

#include "oid.h"
#include "row_key.h"

namespace ipmib::host
{

// The nearest key that is not greater than the instance, or that is smaller. False when there is none: every row
// follows. A number behind octets becomes its floor, below every row, since a module may see the octets and that number
// as one thing (an address with its zone, and the interface) and compare the two in a way of its own.
bool keyBelow(const IndexParts &parts, OidView instance, bool smaller, RowKey &key);

// The nearest key below every row that agrees with the instance in the parts before the first octets; modules give
// short and long octets a meaning of their own, and from here they are not looked at. False when there is none,
// or when the index has no octets.
bool keyBelowOctets(const IndexParts &parts, OidView instance, RowKey &key);

} // namespace ipmib::host
