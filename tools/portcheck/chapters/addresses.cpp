// SPDX-License-Identifier: BSD-3-Clause
// Addresses: the list of those outside fe80::/10, the link-local one of each interface, and the prefix of each.
#include "chapters.h"
#include "listing.h"
#include "prefix_mask.h"
#include "rows.h"

namespace ipmib::portcheck
{

namespace
{

constexpr std::uint32_t defaultVrf = 0;
constexpr std::uint32_t globalKind = 14;

std::string addressWithLength(const FullAddressRecord &record)
{
    return addressText(record.address) + "/" + std::to_string(record.prefix_length);
}

// What holds for global and for link-local ones.
void lookAtRecord(Probe &probe, const std::string &call, const FullAddressRecord &record, std::uint32_t now)
{
    if (record.lead != 0) {
        probe.broken(Promise::addressLead, call, addressWithLength(record) + ": it is " + std::to_string(record.lead));
    }
    if (record.created_s > now + 1 || record.last_changed_s > now + 1 || record.last_changed_s < record.created_s) {
        probe.broken(Promise::addressTimes, call,
                     addressWithLength(record) + ": created at " + std::to_string(record.created_s) + ", changed at " +
                         std::to_string(record.last_changed_s) + ", and now is " + std::to_string(now));
    }
}

void look(Probe &probe, const FullAddressRecord &record, std::uint32_t now)
{
    const std::string call = "IP6Mib_GetNextAddrInVrf";
    if (isLinkLocal(record.address)) {
        probe.broken(Promise::addressesOutsideLinkLocal, call, addressWithLength(record));
    }
    if (!probe.isValid(record.if_index)) {
        probe.broken(Promise::addressInterface, call,
                     addressWithLength(record) + ": ifIndex " + std::to_string(record.if_index) +
                         (probe.isValid(swapped(record.if_index)) ? ", an existing one in the wrong byte order" : ""));
    }
    lookAtRecord(probe, call, record, now);
}

Listing<FullAddressRecord> listingOf(Probe &probe)
{
    const Services &services = probe.services();
    Listing<FullAddressRecord> listing;
    listing.what = "addresses";
    listing.firstCall = "IP6Mib_GetFirstAddrInVrf";
    listing.nextCall = "IP6Mib_GetNextAddrInVrf";
    listing.ascend = Promise::addressesAscend;
    listing.move = Promise::addressesMove;
    listing.begin = Promise::addressesBegin;
    listing.follow = Promise::addressesFollow;
    listing.first = [&probe, &services](FullAddressRecord &row) {
        row = {};
        return probe.fill("IP6Mib_GetFirstAddrInVrf", row, [&](FullAddressRecord *filled) {
            return services.IP6Mib_GetFirstAddrInVrf(defaultVrf, globalKind, filled);
        });
    };
    listing.next = [&probe, &services](const Key &key, FullAddressRecord &row) {
        row = {};
        std::memcpy(row.address, key.address, sizeof row.address);
        return probe.fill("IP6Mib_GetNextAddrInVrf behind " + addressText(key.address), row,
                          [&](FullAddressRecord *filled) {
                              return services.IP6Mib_GetNextAddrInVrf(defaultVrf, globalKind, filled);
                          });
    };
    listing.keyOf = [](const FullAddressRecord &row) { return Key::of(row.address); };
    listing.text = [](const Key &key) { return addressText(key.address); };
    listing.look = [&probe, now = probe.secondsSinceBoot()](const FullAddressRecord &row) { look(probe, row, now); };
    return listing;
}

void checkExact(Probe &probe, const FullAddressRecord &listed)
{
    FullAddressRecord found{};
    const bool succeeded = probe.fill(
        "IP6Mib_GetAddrFullInfoInVrf of " + addressText(listed.address), found, [&](FullAddressRecord *filled) {
            return probe.services().IP6Mib_GetAddrFullInfoInVrf(defaultVrf, listed.address, -1, filled);
        });
    if (!succeeded || found.if_index != listed.if_index ||
        std::memcmp(found.address, listed.address, sizeof found.address) != 0) {
        probe.broken(Promise::addressExact, "IP6Mib_GetAddrFullInfoInVrf",
                     addressWithLength(listed) + (succeeded ? ": it answers another record" : ": it fails"));
    }
}

void checkPrefix(Probe &probe, const FullAddressRecord &record)
{
    std::uint8_t prefix[16];
    std::memcpy(prefix, record.address, sizeof prefix);
    maskTo(prefix, record.prefix_length);
    for (const FullPrefixRecord &listed : prefixesOf(probe, record.if_index)) {
        if (std::memcmp(listed.prefix, prefix, sizeof prefix) == 0 &&
            ipmib_be32_get(listed.length) == record.prefix_length) {
            return;
        }
    }
    probe.broken(Promise::addressHasPrefix, "IP6CFG_GetNextFullPrefix",
                 "interface " + std::to_string(record.if_index) + " has " + addressWithLength(record) + ", and no " +
                     addressText(prefix) + "/" + std::to_string(record.prefix_length));
}

void checkLinkLocal(Probe &probe, std::uint32_t ifIndex, const FullAddressRecord &record)
{
    const std::string call = callText("IP6Mib_GetLinkLocalFullAddr", ifIndex);
    if (!isLinkLocal(record.address) || record.if_index != ifIndex) {
        probe.broken(Promise::linkLocalAddress, call,
                     "it answers " + addressWithLength(record) + " of interface " + std::to_string(record.if_index));
    }
    if (record.prefix_length != 10) {
        probe.broken(Promise::linkLocalLength, call, addressWithLength(record));
    }
    if (!probe.hasLinkLocalRow(ifIndex)) {
        probe.broken(Promise::linkLocalRow, callText("IP6Addr_GetLinkLocalAddr", ifIndex),
                     "it fails, and " + addressText(record.address) + " is there");
    }
    lookAtRecord(probe, call, record, probe.secondsSinceBoot());
}

} // namespace

std::vector<FullAddressRecord> addressesOf(Probe &probe)
{
    return rowsOf(listingOf(probe), probe);
}

void checkAddresses(Probe &probe, host::Resolver &)
{
    const auto addresses = checkedRowsOf(listingOf(probe), probe);
    constexpr std::size_t lookedUp = 500;
    for (std::size_t i = 0; i < addresses.size(); i += addresses.size() / lookedUp + 1) {
        checkExact(probe, addresses[i]);
        checkPrefix(probe, addresses[i]);
    }
    std::size_t linkLocal = 0;
    for (const std::uint32_t ifIndex : interfacesOf(probe, Selection::standard)) {
        FullAddressRecord record;
        if (probe.linkLocal(ifIndex, record)) {
            ++linkLocal;
            checkLinkLocal(probe, ifIndex, record);
        }
    }
    probe.fact("addresses: " + std::to_string(addresses.size()) + ", link-local ones: " + std::to_string(linkLocal));
}

} // namespace ipmib::portcheck
