// SPDX-License-Identifier: BSD-3-Clause
// Packets of random identifiers, whose answers are compared with the list of all instances.
#pragma once

#include "../source.h"
#include "identifiers.h"

#include <functional>

namespace ipmib::host::testing
{

// Whether the value is the one that this instance has; it may check with EXPECT_*.
using ExpectValue = std::function<void(OidView name, const Value &value)>;
// Whether the module may answer a get of an identifier that is none of its instances.
using IsLenient = std::function<bool(OidView name)>;

// One get-next packet, and one walk to the end of the region from a random identifier.
void checkGetNext(Source &source, const Instances &instances, Random &random, const ExpectValue &expectValue);
void checkWalk(Source &source, const Instances &instances, OidView region, const ExpectValue &expectValue);
// One get packet.
void checkGet(Source &source, const Instances &instances, Random &random, const ExpectValue &expectValue,
              const IsLenient &isLenient);

} // namespace ipmib::host::testing
