// SPDX-License-Identifier: BSD-3-Clause
// Addresses: the list of those outside fe80::/10, and the prefix of each.
#include "address_record.h"
#include "chapters.h"
#include "judge.h"
#include "listing.h"
#include "prefix_mask.h"
#include "rows.h"

#include <algorithm>
#include <map>

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint32_t globalKind = 14;

using PrefixesByInterface = std::map<std::uint32_t, std::vector<FullPrefixRecord>>;

void look(Probe &probe, const FullAddressRecord &record)
{
    const std::string call = "IP6Mib_GetNextAddrInVrf";
    if (isLinkLocal(record.address)) {
        probe.broken(Promise::addressesOutsideLinkLocal, call, addressWithLength(record));
    }
    Judge judge(probe, call, addressWithLength(record));
    judge.field(
        Promise::addressInterface, "if_index", record.if_index,
        [&probe](std::uint32_t value) { return probe.isInterface(value); }, "the ifIndex of an existing interface");
    judge.field(
        Promise::addressLength, "prefix_length", record.prefix_length, [](std::uint32_t value) { return value <= 128; },
        "0 to 128");
    lookAtAddress(probe, call, record);
}

FoundRow rowOf(bool succeeded, const FullAddressRecord &record)
{
    return succeeded ? FoundRow(ListedRow::of(Key::of(record.address), record)) : FoundRow();
}

Listing listingOf(Probe &probe)
{
    const Services &services = probe.services();
    Listing listing;
    listing.what = "addresses";
    listing.firstCall = "IP6Mib_GetFirstAddrInVrf";
    listing.nextCall = "IP6Mib_GetNextAddrInVrf";
    listing.exactCall = "IP6Mib_GetAddrFullInfoInVrf";
    listing.ascend = Promise::addressesAscend;
    listing.move = Promise::addressesMove;
    listing.begin = Promise::addressesBegin;
    listing.follow = Promise::addressesFollow;
    listing.exactly = Promise::addressExact;
    listing.first = [&probe, &services] {
        FullAddressRecord record{};
        const bool found = probe.fill("IP6Mib_GetFirstAddrInVrf", record, [&](FullAddressRecord *filled) {
            return services.IP6Mib_GetFirstAddrInVrf(defaultVrf, globalKind, filled);
        });
        return rowOf(found, record);
    };
    const auto next = [&probe, &services](const Key &key, Cursor cursor) {
        auto record = recordFor<FullAddressRecord>(cursor);
        record.lead = 0; // as in every record that counts
        std::memcpy(record.address, key.address, sizeof record.address);
        const bool found = probe.fill("IP6Mib_GetNextAddrInVrf behind " + addressText(key.address), record,
                                      [&](FullAddressRecord *filled) {
                                          return services.IP6Mib_GetNextAddrInVrf(defaultVrf, globalKind, filled);
                                      });
        return rowOf(found, record);
    };
    listing.next = [next](const Key &key) { return next(key, Cursor::cleared); };
    listing.nextOverAnother = [next](const Key &key) { return next(key, Cursor::used); };
    listing.exact = [&probe, &services](const Key &key) {
        FullAddressRecord record{};
        const bool found = probe.fill(
            "IP6Mib_GetAddrFullInfoInVrf of " + addressText(key.address), record, [&](FullAddressRecord *filled) {
                return services.IP6Mib_GetAddrFullInfoInVrf(defaultVrf, key.address, -1, filled);
            });
        return rowOf(found, record);
    };
    listing.text = [](const Key &key) { return addressText(key.address); };
    listing.items = [](const ListedRow &row) { return itemsOf(row.as<FullAddressRecord>()); };
    listing.look = [&probe](const ListedRow &row) { look(probe, row.as<FullAddressRecord>()); };
    return listing;
}

void checkPrefix(Probe &probe, const FullAddressRecord &record, const PrefixesByInterface &prefixes)
{
    const auto onInterface = prefixes.find(record.if_index);
    if (record.prefix_length > 128 || onInterface == prefixes.end()) {
        if (record.prefix_length <= 128 && probe.isValid(record.if_index)) {
            probe.broken(Promise::addressInterface, "IF_GetNextIfIndexByIfSelect",
                         addressWithLength(record) + ": ifIndex " + std::to_string(record.if_index) +
                             " exists and is not in the standard selection: it is left out, or out of order");
        }
        return;
    }
    std::uint8_t wanted[16];
    std::memcpy(wanted, record.address, sizeof wanted);
    maskTo(wanted, record.prefix_length);
    const Key key = Key::of(wanted, record.prefix_length);
    std::string passed;
    for (const FullPrefixRecord &listed : onInterface->second) {
        const Key listedKey = Key::of(listed.prefix, ipmib_be32_get(listed.length));
        if (listedKey == key) {
            return;
        }
        if (key < listedKey && passed.empty()) {
            passed = prefixText(listed.prefix, ipmib_be32_get(listed.length));
        }
    }
    probe.broken(Promise::addressHasPrefix, "IP6CFG_GetNextFullPrefix",
                 "interface " + std::to_string(record.if_index) + " has " + addressWithLength(record) + ", and no " +
                     prefixText(wanted, record.prefix_length) + " for a prefix_length of " +
                     std::to_string(record.prefix_length) +
                     (passed.empty() ? std::string(": it is not listed, or the list ends early")
                                     : ", and the walk goes on to " + passed +
                                           ": it is not listed, or it is out of order and stands behind that"));
}

void checkAbsent(Probe &probe, const Listing &listing)
{
    constexpr std::uint8_t nobody[16] = {0x20, 0x01, 0x0D, 0xB8, 0xFF, 0xFF, 0xFF, 0xFF,
                                         0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
    if (listing.exact(Key::of(nobody))) {
        probe.broken(Promise::addressAbsent, "IP6Mib_GetAddrFullInfoInVrf", "it finds " + addressText(nobody));
    }
}

// Addresses that there may be: those of 128 bits that have a prefix, the interface's identifier behind each prefix, and
// those that differ from one of these in the last byte.
std::vector<Key> maybeAddresses(Probe &probe, const PrefixesByInterface &prefixes, const std::vector<ListedRow> &rows)
{
    constexpr std::size_t most = 8;
    std::vector<Key> maybe;
    for (const auto &[ifIndex, onInterface] : prefixes) {
        FullAddressRecord linkLocal;
        const bool hasLinkLocal = probe.linkLocal(ifIndex, linkLocal);
        for (std::size_t i = 0; i < std::min(onInterface.size(), most); ++i) {
            Key key = Key::of(onInterface[i].prefix);
            if (ipmib_be32_get(onInterface[i].length) > 64) {
                maybe.push_back(key);
                continue;
            }
            if (hasLinkLocal) {
                std::memcpy(key.address + 8, linkLocal.address + 8, 8);
                maybe.push_back(key);
                std::memset(key.address + 8, 0, 8);
            }
            addKeysAround(key, maybe);
        }
    }
    for (std::size_t i = 0; i < rows.size(); i += rows.size() / most + 1) {
        addKeysAround(rows[i].key, maybe);
    }
    maybe.erase(std::remove_if(maybe.begin(), maybe.end(), [](const Key &key) { return isLinkLocal(key.address); }),
                maybe.end());
    return maybe;
}

PrefixesByInterface prefixesQuietly(Probe &probe, const std::vector<std::uint32_t> &interfaces)
{
    const std::size_t before = probe.brokenCount();
    PrefixesByInterface prefixes;
    for (const std::uint32_t ifIndex : interfaces) {
        prefixes[ifIndex] = prefixesOf(probe, ifIndex);
    }
    probe.forgetSince(before); // what is wrong with them stands in their chapter
    return prefixes;
}

} // namespace

std::vector<FullAddressRecord> addressesOf(Probe &probe)
{
    std::vector<FullAddressRecord> addresses;
    for (const ListedRow &row : rowsOf(listingOf(probe), probe)) {
        addresses.push_back(row.as<FullAddressRecord>());
    }
    return addresses;
}

void checkAddresses(Probe &probe, host::Resolver &)
{
    const std::vector<std::uint32_t> interfaces = interfacesOf(probe, Selection::standard);
    probe.know(interfaces);
    const Listing listing = listingOf(probe);
    const std::vector<ListedRow> rows = checkedRowsOf(listing, probe);
    const PrefixesByInterface prefixes = prefixesQuietly(probe, interfaces);
    constexpr std::size_t lookedUp = 500;
    for (std::size_t i = 0; i < rows.size(); i += rows.size() / lookedUp + 1) {
        checkPrefix(probe, rows[i].as<FullAddressRecord>(), prefixes);
    }
    checkHidden(listing, rows, maybeAddresses(probe, prefixes, rows), probe);
    checkAbsent(probe, listing);
    for (const ListedRow &row : rows) {
        probe.row("address", listing.items(row));
    }
    const std::size_t linkLocal = checkLinkLocalAddresses(probe, interfaces);
    probe.fact("addresses: " + std::to_string(rows.size()) + ", link-local ones: " + std::to_string(linkLocal));
}

} // namespace ipmib::portcheck
