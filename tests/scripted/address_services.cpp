// SPDX-License-Identifier: BSD-3-Clause
// Scripted services: prefixes and addresses.
#include "state.h"

using namespace ipmib::scripted;

namespace
{

// Below, at or above 0 as the record's key lies below, at or above the other one's.
int compare(const FullPrefixRecord &one, const FullPrefixRecord &other)
{
    const int order = std::memcmp(one.prefix, other.prefix, sizeof one.prefix);
    return order != 0 ? order : std::memcmp(&one.length, &other.length, sizeof one.length);
}

int compare(const FullAddressRecord &one, const FullAddressRecord &other)
{
    return std::memcmp(one.address, other.address, sizeof one.address);
}

// A cursor is either built for this walk, with nothing in it but the key, or handed on as the platform left it.
template <typename Record>
const char *cursorState(const char *service, const Record &cursor, const Record &keyAlone)
{
    if (isAsLeft(&cursor, sizeof cursor)) {
        return "as left";
    }
    if (std::memcmp(&cursor, &keyAlone, sizeof cursor) != 0) {
        complain(std::string(service) + ": the cursor is neither new nor as it was left");
    }
    return "new";
}

// The lowest record above the key among those that qualify, or the one at the key when the script repeats it.
template <typename Record, typename Qualifies>
const Record *successor(const std::vector<Record> &records, const Record *key, Qualifies qualifies)
{
    const Record *next = nullptr;
    for (const Record &record : records) {
        if (!qualifies(record)) {
            continue;
        }
        if (key != nullptr && compare(record, *key) == 0 && world().repeatsKey > 0) {
            --world().repeatsKey;
            return &record;
        }
        if ((key == nullptr || compare(record, *key) > 0) && (next == nullptr || compare(record, *next) < 0)) {
            next = &record;
        }
    }
    return next;
}

// The prefix of an interface behind the key, or its first one.
const FullPrefixRecord *prefixAfter(std::uint32_t ifIndex, const FullPrefixRecord *key)
{
    if (world().nextPrefix) {
        return world().nextPrefix(ifIndex, key);
    }
    return successor(world().prefixes, key,
                     [ifIndex](const auto &each) { return ipmib_be32_get(each.if_index) == ifIndex; });
}

std::uint32_t answerPrefix(const char *service, const FullPrefixRecord *found, FullPrefixRecord *record)
{
    const std::uint32_t result = answer(service, found, record);
    if (result == 0) { // fields that nobody reads, so that a cursor that was rebuilt shows
        record->unread_0 = record->unread_12 = record->unread_13 = ipmib_be32(0xE1E2E3E4);
    }
    leaveCursor(record, sizeof *record);
    return result;
}

} // namespace

uint32_t IP6CFG_GetFirstFullPrefix(uint32_t if_index, int32_t minus_one, FullPrefixRecord *record)
{
    note([&] { return "IP6CFG_GetFirstFullPrefix(" + number(if_index) + ", " + std::to_string(minus_one) + ")"; });
    expectCleared("IP6CFG_GetFirstFullPrefix", record, sizeof *record);
    return answerPrefix("IP6CFG_GetFirstFullPrefix", prefixAfter(if_index, nullptr), record);
}

uint32_t IP6CFG_GetNextFullPrefix(uint32_t if_index, int32_t minus_one, FullPrefixRecord *record)
{
    FullPrefixRecord keyAlone = {};
    keyAlone.if_index = record->if_index;
    std::memcpy(keyAlone.prefix, record->prefix, sizeof keyAlone.prefix);
    keyAlone.length = record->length;
    const char *const cursor = cursorState("IP6CFG_GetNextFullPrefix", *record, keyAlone);
    note([&] {
        return "IP6CFG_GetNextFullPrefix(" + number(if_index) + ", " + std::to_string(minus_one) + ", " +
               addressText(record->prefix) + "/" + number(ipmib_be32_get(record->length)) + " " + cursor + ")";
    });
    if (ipmib_be32_get(record->if_index) != if_index) {
        complain("IP6CFG_GetNextFullPrefix: the cursor names another interface than the call");
    }
    return answerPrefix("IP6CFG_GetNextFullPrefix", prefixAfter(if_index, &keyAlone), record);
}

uint32_t IP6Addr_GetLinkLocalAddr(uint32_t if_index, LinkLocalBuffer *buffer)
{
    note([&] { return "IP6Addr_GetLinkLocalAddr(" + number(if_index) + ")"; });
    expectCleared("IP6Addr_GetLinkLocalAddr", buffer, sizeof *buffer);
    scribble(buffer); // only the result counts
    return world().linkLocal.count(if_index) != 0 ? 0 : World::nothingThere;
}

uint32_t IP6Mib_GetFirstAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record)
{
    note([&] { return "IP6Mib_GetFirstAddrInVrf(" + number(vrf) + ", " + number(kind) + ")"; });
    expectCleared("IP6Mib_GetFirstAddrInVrf", record, sizeof *record);
    if (!world().firstAddresses.empty()) {
        *record = world().firstAddresses.front();
        world().firstAddresses.pop_front();
        return 0;
    }
    const auto any = [](const auto &) { return true; };
    return answer("IP6Mib_GetFirstAddrInVrf", successor<FullAddressRecord>(world().addresses, nullptr, any), record);
}

uint32_t IP6Mib_GetNextAddrInVrf(uint32_t vrf, uint32_t kind, FullAddressRecord *record)
{
    FullAddressRecord keyAlone = {};
    std::memcpy(keyAlone.address, record->address, sizeof keyAlone.address);
    const char *const cursor = cursorState("IP6Mib_GetNextAddrInVrf", *record, keyAlone);
    note([&] {
        return "IP6Mib_GetNextAddrInVrf(" + number(vrf) + ", " + number(kind) + ", " + addressText(record->address) +
               " " + cursor + ")";
    });
    const auto any = [](const auto &) { return true; };
    const std::uint32_t result =
        answer("IP6Mib_GetNextAddrInVrf", successor(world().addresses, &keyAlone, any), record);
    leaveCursor(record, sizeof *record);
    return result;
}

uint32_t IP6Mib_GetAddrFullInfoInVrf(uint32_t vrf, const uint8_t *address, int32_t minus_one, FullAddressRecord *record)
{
    note([&] {
        return "IP6Mib_GetAddrFullInfoInVrf(" + number(vrf) + ", " + addressText(address) + ", " +
               std::to_string(minus_one) + ")";
    });
    expectCleared("IP6Mib_GetAddrFullInfoInVrf", record, sizeof *record);
    const FullAddressRecord *found = nullptr;
    for (const FullAddressRecord &candidate : world().addresses) {
        if (std::memcmp(candidate.address, address, sizeof candidate.address) == 0) {
            found = &candidate;
        }
    }
    return answer("IP6Mib_GetAddrFullInfoInVrf", found, record);
}

uint32_t IP6Mib_GetLinkLocalFullAddr(uint32_t if_index, FullAddressRecord *record)
{
    note([&] { return "IP6Mib_GetLinkLocalFullAddr(" + number(if_index) + ")"; });
    expectCleared("IP6Mib_GetLinkLocalFullAddr", record, sizeof *record);
    return answer("IP6Mib_GetLinkLocalFullAddr", find(world().linkLocalAddresses, if_index), record);
}
