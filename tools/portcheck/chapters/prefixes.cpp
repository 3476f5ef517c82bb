// SPDX-License-Identifier: BSD-3-Clause
// Prefixes of each interface.
#include "chapters.h"
#include "judge.h"
#include "listing.h"
#include "prefix_mask.h"
#include "rows.h"

namespace ipmib::portcheck
{

namespace
{

constexpr std::int32_t anyPrefix = -1;

// What a prefix says by itself.
void look(Probe &probe, std::uint32_t ifIndex, const FullPrefixRecord &record, std::uint32_t now)
{
    const std::string call = "IP6CFG_GetNextFullPrefix";
    const std::uint32_t length = ipmib_be32_get(record.length);
    const std::string which = "interface " + std::to_string(ifIndex) + ", " + prefixText(record.prefix, length);
    if (isLinkLocal(record.prefix)) {
        probe.broken(Promise::prefixesOutsideLinkLocal, call, which);
    }
    Judge judge(probe, call, which);
    judge.field(
        Promise::prefixInterface, "if_index", ipmib_be32_get(record.if_index),
        [ifIndex](std::uint32_t value) { return value == ifIndex; },
        "the interface asked for, " + std::to_string(ifIndex));
    judge.field(
        Promise::prefixLength, "length", length, [](std::uint32_t value) { return value <= 128; }, "0 to 128");
    if (length <= 128 && !isMasked(record.prefix, length)) {
        probe.broken(Promise::prefixLength, call,
                     which + ": length is " + std::to_string(length) + ", and the prefix has bits behind its length");
    }
    judge.code(Promise::prefixCodes, "origin", ipmib_be32_get(record.origin));
    if ((record.flags & 0x0F) != 0) { // bits that no standard has given a meaning
        probe.broken(Promise::prefixCodes, call,
                     which + ": flags is " + std::to_string(record.flags) +
                         ", not 128 (on-link), 64 (autonomous) or both");
    }
    const std::uint32_t preferred = ipmib_be32_get(record.preferred_s);
    const std::uint32_t valid = ipmib_be32_get(record.valid_s);
    judge.lifetime(Promise::prefixTimes, "valid_s", valid);
    judge.lifetime(Promise::prefixTimes, "preferred_s", preferred);
    if (preferred > valid) {
        probe.broken(Promise::prefixTimes, call,
                     which + ": preferred_s is " + std::to_string(preferred) + ", longer than valid_s, " +
                         std::to_string(valid));
    }
    judge.time(Promise::prefixTimes, "learned_at_s", ipmib_be32_get(record.learned_at_s), now);
}

FoundRow rowOf(bool succeeded, const FullPrefixRecord &record)
{
    return succeeded ? FoundRow(ListedRow::of(Key::of(record.prefix, ipmib_be32_get(record.length)), record))
                     : FoundRow();
}

FoundRow findFirst(Probe &probe, std::uint32_t ifIndex)
{
    FullPrefixRecord record{};
    const bool found =
        probe.fill(callText("IP6CFG_GetFirstFullPrefix", ifIndex), record, [&](FullPrefixRecord *filled) {
            return probe.services().IP6CFG_GetFirstFullPrefix(ifIndex, anyPrefix, filled);
        });
    return rowOf(found, record);
}

FoundRow findNext(Probe &probe, std::uint32_t ifIndex, const Key &key, Cursor cursor = Cursor::cleared)
{
    auto record = recordFor<FullPrefixRecord>(cursor);
    record.if_index = ipmib_be32(ifIndex);
    std::memcpy(record.prefix, key.address, sizeof record.prefix);
    record.length = ipmib_be32(key.number);
    const bool found = probe.fill("IP6CFG_GetNextFullPrefix behind " + prefixText(key.address, key.number), record,
                                  [&](FullPrefixRecord *filled) {
                                      return probe.services().IP6CFG_GetNextFullPrefix(ifIndex, anyPrefix, filled);
                                  });
    return rowOf(found, record);
}

Listing listingOf(Probe &probe, std::uint32_t ifIndex)
{
    Listing listing;
    listing.what = "prefixes of interface " + std::to_string(ifIndex);
    listing.firstCall = "IP6CFG_GetFirstFullPrefix";
    listing.nextCall = "IP6CFG_GetNextFullPrefix";
    listing.ascend = Promise::prefixesAscend;
    listing.move = Promise::prefixesMove;
    listing.begin = Promise::prefixesBegin;
    listing.follow = Promise::prefixesFollow;
    listing.keys = Promise::prefixLength;
    listing.first = [&probe, ifIndex] { return findFirst(probe, ifIndex); };
    listing.next = [&probe, ifIndex](const Key &key) { return findNext(probe, ifIndex, key); };
    listing.nextOverAnother = [&probe, ifIndex](const Key &key) { return findNext(probe, ifIndex, key, Cursor::used); };
    listing.text = [](const Key &key) { return prefixText(key.address, key.number); };
    listing.items = [](const ListedRow &row) { return itemsOf(row.as<FullPrefixRecord>()); };
    listing.look = [&probe, ifIndex, now = probe.secondsSinceBoot()](const ListedRow &row) {
        look(probe, ifIndex, row.as<FullPrefixRecord>(), now);
    };
    return listing;
}

} // namespace

std::vector<FullPrefixRecord> prefixesOf(Probe &probe, std::uint32_t ifIndex)
{
    const Listing listing = listingOf(probe, ifIndex);
    std::vector<FullPrefixRecord> prefixes;
    if (const FoundRow first = listing.first(); first && first->key == listing.start) {
        prefixes.push_back(first->as<FullPrefixRecord>()); // ::/0, which follows no key
    }
    for (const ListedRow &row : rowsOf(listing, probe)) {
        prefixes.push_back(row.as<FullPrefixRecord>());
    }
    return prefixes;
}

void checkPrefixes(Probe &probe, host::Resolver &)
{
    std::size_t count = 0;
    const std::vector<std::uint32_t> interfaces = interfacesOf(probe, Selection::standard);
    for (std::size_t place = 0; place < interfaces.size(); ++place) {
        Listing listing = listingOf(probe, interfaces[place]);
        listing.elsewhere = [&] { findFirst(probe, interfaces[(place + 1) % interfaces.size()]); };
        const auto rows = checkedRowsOf(listing, probe);
        count += rows.size();
        for (const ListedRow &row : rows) {
            probe.row("prefix", listing.items(row));
        }
    }
    probe.fact("prefixes: " + std::to_string(count));
}

} // namespace ipmib::portcheck
