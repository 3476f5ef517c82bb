// SPDX-License-Identifier: BSD-3-Clause
// The link-local address of each interface, which three services know of.
#include "address_record.h"
#include "judge.h"
#include "key.h"

namespace ipmib::portcheck
{

namespace
{

void checkLinkLocal(Probe &probe, std::uint32_t ifIndex, const FullAddressRecord &record)
{
    const std::string call = callText("IP6Mib_GetLinkLocalFullAddr", ifIndex);
    if (!isLinkLocal(record.address)) {
        std::uint8_t other[16];
        for (std::size_t i = 0; i < sizeof other; ++i) {
            other[i] = record.address[i / 4 * 4 + 3 - i % 4];
        }
        probe.broken(Promise::linkLocalAddress, call,
                     "it answers " + addressWithLength(record) + " of interface " + std::to_string(record.if_index) +
                         (isLinkLocal(other) ? ": with the bytes of each word turned round it is " +
                                                   addressText(other) + ", the right one in the wrong byte order"
                                             : ""));
    }
    Judge judge(probe, call, addressWithLength(record));
    judge.field(
        Promise::linkLocalAddress, "if_index", record.if_index,
        [ifIndex](std::uint32_t value) { return value == ifIndex; },
        "the interface asked for, " + std::to_string(ifIndex));
    judge.field(
        Promise::linkLocalLength, "prefix_length", record.prefix_length,
        [](std::uint32_t value) { return value == 10; }, "10");
    judge.linkLocal(record.address, ifIndex);
    lookAtAddress(probe, call, record);
    probe.row("address", itemsOf(record));
}

bool isInUse(const FullAddressRecord &record)
{
    constexpr std::uint32_t tentative = 64;
    constexpr std::uint32_t duplicate = 128;
    return record.state != tentative && record.state != duplicate;
}

// Whether there is a link-local address is known by two services more. One that is not in use yet may have a row.
void checkThatThereIsOne(Probe &probe, std::uint32_t ifIndex, const FullAddressRecord *record)
{
    const bool hasRow = probe.hasLinkLocalRow(ifIndex);
    if (record == nullptr) {
        if (hasRow) {
            probe.broken(Promise::linkLocalRow, callText("IP6Addr_GetLinkLocalAddr", ifIndex),
                         "it succeeds, and there is no link-local address");
        }
        return; // an interface may be in use without one
    }
    const std::string seen = "it fails, and " + addressText(record->address) + " is there";
    if (isInUse(*record) && !hasRow) {
        probe.broken(Promise::linkLocalRow, callText("IP6Addr_GetLinkLocalAddr", ifIndex), seen);
    }
    FullAddressRecord later;
    if (isInUse(*record) != probe.hasMainLinkLocal(ifIndex) && probe.linkLocal(ifIndex, later) &&
        isInUse(later) == isInUse(*record)) { // it has not just come into use
        probe.broken(Promise::mainLinkLocal, callText("IP6ADDR_DRVK_GetMainLLA", ifIndex),
                     isInUse(*record)
                         ? seen
                         : "it succeeds, and " + addressText(record->address) + " is there with a state of " +
                               std::to_string(record->state) + ": not in use");
    }
}

} // namespace

std::string addressWithLength(const FullAddressRecord &record)
{
    return prefixText(record.address, record.prefix_length);
}

void lookAtAddress(Probe &probe, const std::string &call, const FullAddressRecord &record)
{
    Judge judge(probe, call, addressWithLength(record));
    judge.field(
        Promise::addressLead, "lead", record.lead, [](std::uint32_t value) { return value == 0; }, "0");
    judge.code(Promise::addressCodes, "origin", record.origin);
    judge.code(Promise::addressCodes, "flags", record.flags);
    judge.code(Promise::addressCodes, "state", record.state);
    const std::uint32_t now = probe.secondsSinceBoot();
    judge.time(Promise::addressTimes, "created_s", record.created_s, now);
    judge.time(Promise::addressTimes, "last_changed_s", record.last_changed_s, now);
    if (record.last_changed_s < record.created_s && record.created_s <= now + 1) {
        probe.broken(Promise::addressTimes, call,
                     addressWithLength(record) + ": last_changed_s is " + std::to_string(record.last_changed_s) +
                         ", before created_s, " + std::to_string(record.created_s));
    }
}

std::size_t checkLinkLocalAddresses(Probe &probe, const std::vector<std::uint32_t> &interfaces)
{
    std::size_t linkLocal = 0;
    for (std::size_t place = 0; place < interfaces.size(); ++place) {
        const std::uint32_t ifIndex = interfaces[place];
        FullAddressRecord record;
        const bool found = probe.linkLocal(ifIndex, record);
        checkThatThereIsOne(probe, ifIndex, found ? &record : nullptr);
        if (!found) {
            continue;
        }
        ++linkLocal;
        checkLinkLocal(probe, ifIndex, record);
        probe.expectSteady(
            "IP6Mib_GetLinkLocalFullAddr", "interface " + std::to_string(ifIndex),
            [&] { probe.linkLocal(interfaces[(place + 1) % interfaces.size()], record); },
            [&] { return probe.linkLocal(ifIndex, record) ? itemsOf(record) : Items(); });
    }
    return linkLocal;
}

} // namespace ipmib::portcheck
