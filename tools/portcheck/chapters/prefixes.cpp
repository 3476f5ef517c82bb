// SPDX-License-Identifier: BSD-3-Clause
// Prefixes of each interface.
#include "chapters.h"
#include "listing.h"
#include "prefix_mask.h"
#include "rows.h"

namespace ipmib::portcheck
{

namespace
{

constexpr std::int32_t anyPrefix = -1;

std::string prefixText(const std::uint8_t *prefix, std::uint32_t length)
{
    return addressText(prefix) + "/" + std::to_string(length);
}

// What a prefix says by itself.
void look(Probe &probe, std::uint32_t ifIndex, const FullPrefixRecord &record, std::uint32_t now)
{
    const std::string call = "IP6CFG_GetNextFullPrefix";
    const std::uint32_t length = ipmib_be32_get(record.length);
    const std::string which = "interface " + std::to_string(ifIndex) + ", " + prefixText(record.prefix, length);
    if (isLinkLocal(record.prefix)) {
        probe.broken(Promise::prefixesOutsideLinkLocal, call, which);
    }
    const std::uint32_t entered = ipmib_be32_get(record.if_index);
    if (entered != ifIndex) {
        probe.broken(Promise::prefixInterface, call,
                     which + ": the record's ifIndex reads " + std::to_string(entered) +
                         (swapped(entered) == ifIndex ? ", the right one in the wrong byte order" : ""));
    }
    if (length > 128) {
        probe.broken(Promise::prefixLength, call,
                     which + (swapped(length) <= 128
                                  ? ", which is " + std::to_string(swapped(length)) + " in the other byte order"
                                  : ""));
    } else if (!isMasked(record.prefix, length)) {
        probe.broken(Promise::prefixLength, call, which + " has bits behind its length");
    }
    const std::uint32_t preferred = ipmib_be32_get(record.preferred_s);
    const std::uint32_t valid = ipmib_be32_get(record.valid_s);
    if (preferred > valid || ipmib_be32_get(record.learned_at_s) > now + 1) {
        probe.broken(Promise::prefixTimes, call,
                     which + " is preferred for " + std::to_string(preferred) + " and valid for " +
                         std::to_string(valid) + " seconds, learned at " +
                         std::to_string(ipmib_be32_get(record.learned_at_s)) + "; now is " + std::to_string(now));
    }
}

Listing<FullPrefixRecord> listingOf(Probe &probe, std::uint32_t ifIndex)
{
    const Services &services = probe.services();
    Listing<FullPrefixRecord> listing;
    listing.what = "prefixes of interface " + std::to_string(ifIndex);
    listing.firstCall = "IP6CFG_GetFirstFullPrefix";
    listing.nextCall = "IP6CFG_GetNextFullPrefix";
    listing.ascend = Promise::prefixesAscend;
    listing.move = Promise::prefixesMove;
    listing.begin = Promise::prefixesBegin;
    listing.follow = Promise::prefixesFollow;
    listing.first = [&probe, &services, ifIndex](FullPrefixRecord &row) {
        row = {};
        return probe.fill(callText("IP6CFG_GetFirstFullPrefix", ifIndex), row, [&](FullPrefixRecord *filled) {
            return services.IP6CFG_GetFirstFullPrefix(ifIndex, anyPrefix, filled);
        });
    };
    listing.next = [&probe, &services, ifIndex](const Key &key, FullPrefixRecord &row) {
        row = {};
        row.if_index = ipmib_be32(ifIndex);
        std::memcpy(row.prefix, key.address, sizeof row.prefix);
        row.length = ipmib_be32(key.number);
        return probe.fill(
            "IP6CFG_GetNextFullPrefix behind " + prefixText(key.address, key.number), row,
            [&](FullPrefixRecord *filled) { return services.IP6CFG_GetNextFullPrefix(ifIndex, anyPrefix, filled); });
    };
    listing.keyOf = [](const FullPrefixRecord &row) { return Key::of(row.prefix, ipmib_be32_get(row.length)); };
    listing.text = [](const Key &key) { return prefixText(key.address, key.number); };
    listing.look = [&probe, ifIndex, now = probe.secondsSinceBoot()](const FullPrefixRecord &row) {
        look(probe, ifIndex, row, now);
    };
    return listing;
}

} // namespace

std::vector<FullPrefixRecord> prefixesOf(Probe &probe, std::uint32_t ifIndex)
{
    const Listing<FullPrefixRecord> listing = listingOf(probe, ifIndex);
    std::vector<FullPrefixRecord> prefixes = rowsOf(listing, probe);
    FullPrefixRecord first;
    if (listing.first(first) && listing.keyOf(first) == listing.start) {
        prefixes.insert(prefixes.begin(), first); // ::/0, which follows no key
    }
    return prefixes;
}

void checkPrefixes(Probe &probe, host::Resolver &)
{
    std::size_t count = 0;
    for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::standard)) {
        count += checkedRowsOf(listingOf(probe, ifIndex), probe).size();
    }
    probe.fact("prefixes: " + std::to_string(count));
}

} // namespace ipmib::portcheck
