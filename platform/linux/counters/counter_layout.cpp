// SPDX-License-Identifier: BSD-3-Clause
// Which counter stands where in the kernel's binary array of IPv6 counters.
#include "counters/counter_layout.h"

#include "core/log.h"

#include <algorithm>

namespace ipmib::platform
{

namespace
{

using enum Ip6Counter;

// The array's element 0 is its own length; these are the elements from 1 on.
constexpr Ip6Counter order2010[] = {
    inReceives, inOctets,     inDelivers,      outForwDatagrams, outRequests,  outOctets,   inHdrErrors, inTooBigErrors,
    inNoRoutes, inAddrErrors, inUnknownProtos, inTruncatedPkts,  inDiscards,   outDiscards, outNoRoutes, ignored,
    reasmReqds, reasmOKs,     reasmFails,      fragOKs,          fragFails,    fragCreates, inMcastPkts, outMcastPkts,
    ignored,    ignored,      inMcastOctets,   outMcastOctets,   ignored,      ignored,     ignored,     ignored,
    ignored,    ignored,      ignored,         ignored,          outTransmits,
};
constexpr Ip6Counter order2025[] = {
    inReceives,   inOctets,        inDelivers,      ignored,          ignored,        ignored,        ignored,
    outRequests,  outTransmits,    outOctets,       outForwDatagrams, inHdrErrors,    inTooBigErrors, inNoRoutes,
    inAddrErrors, inUnknownProtos, inTruncatedPkts, inDiscards,       outDiscards,    outNoRoutes,    ignored,
    reasmReqds,   reasmOKs,        reasmFails,      fragOKs,          fragFails,      fragCreates,    inMcastPkts,
    outMcastPkts, ignored,         ignored,         inMcastOctets,    outMcastOctets,
};
struct Order {
    std::span<const Ip6Counter> counters;
    std::size_t shortestArray; // of the kernels that have it
};
constexpr Order orders[] = {{order2010, 0}, {order2025, 38}};

Ip6Counters inOrder(CounterLayout::Array array, std::span<const Ip6Counter> order)
{
    Ip6Counters counters;
    for (std::size_t i = 0; i < order.size() && i + 1 < array.size(); ++i) {
        counters.set(order[i], array[i + 1]);
    }
    return counters;
}

// Counters only grow, so what is named lies between an earlier and a later reading of the array.
bool between(const Ip6Counters &earlier, const Ip6Counters &named, const Ip6Counters &later)
{
    for (std::size_t i = 0; i < ip6CounterCount; ++i) {
        const auto which = static_cast<Ip6Counter>(i);
        if (earlier.counted(which) && (named[which] < earlier[which] || later[which] < named[which])) {
            return false;
        }
    }
    return true;
}

} // namespace

std::optional<Ip6Counters> CounterLayout::decode(Array array, const Source &source)
{
    std::optional<Ip6Counters> decoded;
    for (std::size_t i = 0; i < std::size(orders); ++i) {
        if (array.size() < orders[i].shortestArray) {
            candidates_ &= ~(1u << i);
        }
        if ((candidates_ >> i & 1) == 0) {
            continue;
        }
        const Ip6Counters counters = inOrder(array, orders[i].counters);
        if (decoded && !(*decoded == counters)) {
            decoded.reset();
            break; // two orders say different things
        }
        decoded = counters;
    }
    if (decoded) {
        return decoded;
    }
    const auto named = source.named();
    if (!named || candidates_ == 0) {
        return named;
    }
    const auto later = source.again();
    return later ? tellApart(array, *named, *later) : *named;
}

Ip6Counters CounterLayout::tellApart(Array array, const Ip6Counters &named, Array later)
{
    for (std::size_t i = 0; i < std::size(orders); ++i) {
        if (!between(inOrder(array, orders[i].counters), named, inOrder(later, orders[i].counters))) {
            candidates_ &= ~(1u << i);
        }
    }
    if (candidates_ == 0) {
        logWarning("counters: this kernel's binary IPv6 counters are in an unknown order, reading them from /proc");
    }
    return named;
}

} // namespace ipmib::platform
