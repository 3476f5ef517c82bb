// SPDX-License-Identifier: BSD-3-Clause
// The parts of a check, in the order in which they are made. Each finds out by itself what it needs, so that one that
// does not end or dies takes no other along.
#pragma once

#include "probe.h"

#include "host/resolver.h"

#include <span>

namespace ipmib::portcheck
{

struct Chapter {
    const char *name;
    void (*check)(Probe &probe, host::Resolver &resolver);
};

std::span<const Chapter> chapters();

void checkState(Probe &probe, host::Resolver &resolver);
void checkInterfaces(Probe &probe, host::Resolver &resolver);
void checkCounters(Probe &probe, host::Resolver &resolver);
void checkIpv6Interfaces(Probe &probe, host::Resolver &resolver);
void checkNeighbours(Probe &probe, host::Resolver &resolver);
void checkPrefixes(Probe &probe, host::Resolver &resolver);
void checkAddresses(Probe &probe, host::Resolver &resolver);
void checkRouters(Probe &probe, host::Resolver &resolver);
void checkClock(Probe &probe, host::Resolver &resolver);
void checkTables(Probe &probe, host::Resolver &resolver);

} // namespace ipmib::portcheck
