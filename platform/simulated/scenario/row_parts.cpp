// SPDX-License-Identifier: BSD-3-Clause
// Lifetimes and link-layer addresses.
#include "scenario/row_parts.h"

#include "scenario/forms.h"

#include <algorithm>

namespace ipmib::simulated
{

Lifetime readRenewed(Object &object, const char *name, std::uint32_t longest)
{
    Lifetime lifetime;
    if (const auto seconds = object.find(name)) {
        lifetime.seconds = readLifetime(*seconds, longest);
    }
    lifetime.renewedEvery = object.number("renewed", 0, 1, UINT32_MAX);
    return lifetime;
}

void readLifetimes(Object &object, Lifetime &valid, Lifetime &preferred)
{
    valid = readRenewed(object, "valid");
    preferred = valid;
    if (const auto said = object.find("preferred")) {
        preferred.seconds = readLifetime(*said);
        if (preferred.seconds > valid.seconds) {
            said->fail("the preferred lifetime is not longer than the valid one");
        }
    }
}

void readLinkLayer(Object &object, Neighbour &neighbour)
{
    if (const auto mac = object.find("mac")) {
        const Mac bytes = readMac(*mac);
        std::copy(bytes.begin(), bytes.end(), neighbour.linkLayer);
    }
}

} // namespace ipmib::simulated
