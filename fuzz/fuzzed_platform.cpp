// SPDX-License-Identifier: BSD-3-Clause
// The services over the fuzzer's bytes: the first byte of an answer says whether it succeeds.
#include "fuzzed_platform.h"

#include <ipmib/platform.h>

namespace ipmib::fuzz
{
namespace
{

Bytes *source = nullptr;
std::size_t iterators = 0;
std::size_t callsInVain = 0;

constexpr std::uint32_t failures[] = {1, 0x40010001, 0x40010005, 0xFFFFFFFF};
// Far more than the module needs to find out that nothing answers any more.
constexpr std::size_t patience = 100'000;

// 0, or how the service fails.
std::uint32_t outcome()
{
    if (source->empty()) {
        require(++callsInVain < patience, "the module gives up when every service fails");
        return failures[0];
    }
    constexpr std::uint8_t firstFailure = 0xC0;
    const std::uint8_t choice = source->byte();
    return choice < firstFailure ? 0 : failures[choice % std::size(failures)];
}

// A record as raw bytes; the first says how many there are, 0 leaves the record as it is.
template <typename Record>
std::uint32_t answerRaw(Record *record)
{
    const std::uint32_t result = outcome();
    if (const std::size_t size = std::min<std::size_t>(source->byte(), sizeof(Record)); size != 0) {
        source->copyTo(record, size);
    }
    return result;
}

IpmibBe32 bigEndianNumber()
{
    return ipmib_be32(source->number());
}

// One of the calls that move a cursor: it may stay where it is.
bool moves()
{
    return source->byte() % 8 != 0;
}

std::uint32_t answer(NeighbourEntry *entry)
{
    const std::uint32_t result = outcome();
    if (moves()) {
        entry->if_index = bigEndianNumber();
        source->address(entry->address);
        source->copyTo(entry->link_layer, sizeof entry->link_layer);
        entry->type = bigEndianNumber();
        entry->state = bigEndianNumber();
        entry->last_updated_s = bigEndianNumber();
    }
    return result;
}

std::uint32_t answer(FullPrefixRecord *record)
{
    const std::uint32_t result = outcome();
    if (moves()) {
        record->if_index = bigEndianNumber();
        source->address(record->prefix);
        record->length = bigEndianNumber();
        record->origin = bigEndianNumber();
        record->valid_s = bigEndianNumber();
        record->preferred_s = bigEndianNumber();
        record->flags = source->byte();
        record->learned_at_s = bigEndianNumber();
    }
    return result;
}

std::uint32_t answer(FullAddressRecord *record)
{
    const std::uint32_t result = outcome();
    if (moves()) {
        record->lead = source->byte() % 4 == 3;
        record->if_index = source->number();
        source->address(record->address);
        record->prefix_length = source->number();
        record->origin = source->number();
        record->flags = source->number();
        record->state = source->number();
        record->created_s = source->number();
        record->last_changed_s = source->number();
    }
    return result;
}

std::uint32_t answer(GatewayRecord *gateway)
{
    const std::uint32_t result = outcome();
    if (moves()) {
        gateway->if_index = bigEndianNumber();
        source->address(gateway->address);
        gateway->lead = bigEndianNumber();
        gateway->flags = bigEndianNumber();
        gateway->lifetime_s = bigEndianNumber();
        gateway->learned_at_s = bigEndianNumber();
    }
    return result;
}

// An interface, in whatever order.
std::uint32_t interface()
{
    return outcome() == 0 ? source->number() : 0;
}

} // namespace

void answerFrom(Bytes &bytes)
{
    source = &bytes;
    iterators = 0;
    callsInVain = 0;
}

std::size_t openIterators()
{
    return iterators;
}

} // namespace ipmib::fuzz

using namespace ipmib::fuzz;

extern "C" {

std::uint32_t IP6_DaemonCheck(std::uint32_t)
{
    return outcome();
}
std::uint32_t IP_DaemonCheck(std::uint32_t)
{
    return outcome();
}

// Nobody looks at the results of a selection; its memory is the platform's to write.
std::uint32_t IF_Select_Init(std::uint32_t, IfSelection *selection)
{
    std::memset(selection, 0xE7, sizeof *selection);
    return 0;
}
std::uint32_t IF_SelectType_Set(std::uint32_t, IfSelection *)
{
    return 0;
}
std::uint32_t IF_SelectTypeSetGroup(std::uint32_t, IfSelection *)
{
    return 0;
}
std::uint32_t IF_SelectCondition_Set(std::uint32_t, IfSelection *)
{
    return 0;
}

std::uintptr_t IF_IteratorInitialize()
{
    if (outcome() != 0) {
        return 0;
    }
    ++iterators;
    return 1;
}
// One that could not be opened may be closed as well.
std::uint32_t IF_IteratorFinalize(std::uintptr_t *iterator)
{
    require(*iterator <= iterators, "only open iterators are closed");
    iterators -= *iterator;
    return 0;
}
std::uint32_t IF_GetFirstIfIndexByIfSelect(IfSelection *, std::uintptr_t)
{
    return interface();
}
std::uint32_t IF_GetNextIfIndexByIfSelect(IfSelection *, std::uintptr_t, std::uint32_t)
{
    return interface();
}
std::uint32_t IF_IsValidIfIndex(std::uint32_t)
{
    return outcome() == 0 ? 1 : 0;
}

std::uint32_t IP6_GetMibStat(std::uint32_t, Ip6MibStat *stat)
{
    return answerRaw(stat);
}
std::uint32_t IP6_GetIfStat(std::uint32_t, std::uint32_t, Ip6MibStat *stat)
{
    return answerRaw(stat);
}
std::uint32_t IP_GetMibIfStat(std::uint32_t, IpMibIfStat *stat)
{
    return answerRaw(stat);
}
std::uint32_t ICMP6_GetMibStat(Icmp6MibStat *stat)
{
    return answerRaw(stat);
}
std::uint32_t ND_GetHopLimit()
{
    return source->number();
}
std::uint32_t ND_GetIfConfigInfo(std::uint32_t, NdIfConfigInfo *info)
{
    return answerRaw(info);
}
std::uint32_t IP6Mib_GetIFID(std::uint32_t, std::uint8_t *identifier)
{
    source->copyTo(identifier, 8);
    return outcome();
}
std::uint32_t IP6ADDR_DRVK_GetMainLLA(std::uint32_t, FullAddressRecord *address)
{
    return answer(address);
}
std::uint32_t IP6_GetIfMTU(std::uint32_t, std::uint32_t *mtu)
{
    *mtu = source->number();
    return outcome();
}
std::uint32_t ND_GetNetToPhysicalTable(std::uint32_t, const std::uint8_t *, NeighbourEntry *entry, std::uintptr_t)
{
    return answer(entry);
}
std::uint32_t ND_GetNextNetToPhysicalTable(std::uint32_t, NeighbourEntry *entry)
{
    return answer(entry);
}
std::uint32_t IP6CFG_GetFirstFullPrefix(std::uint32_t, std::int32_t, FullPrefixRecord *record)
{
    return answer(record);
}
std::uint32_t IP6CFG_GetNextFullPrefix(std::uint32_t, std::int32_t, FullPrefixRecord *record)
{
    return answer(record);
}
std::uint32_t IP6Addr_GetLinkLocalAddr(std::uint32_t, LinkLocalBuffer *buffer)
{
    std::memset(buffer, 0xE7, sizeof *buffer);
    return outcome();
}
std::uint32_t IP6Mib_GetFirstAddrInVrf(std::uint32_t, std::uint32_t, FullAddressRecord *record)
{
    return answer(record);
}
std::uint32_t IP6Mib_GetNextAddrInVrf(std::uint32_t, std::uint32_t, FullAddressRecord *record)
{
    return answer(record);
}
std::uint32_t IP6Mib_GetAddrFullInfoInVrf(std::uint32_t, const std::uint8_t *, std::int32_t, FullAddressRecord *record)
{
    return answer(record);
}
std::uint32_t IP6Mib_GetLinkLocalFullAddr(std::uint32_t, FullAddressRecord *record)
{
    return answer(record);
}
std::uint32_t IP6Mib_GetFirstGatewayInVrf(std::uint32_t, std::uint32_t, GatewayRecord *gateway)
{
    return answer(gateway);
}
std::uint32_t IP6Mib_GetNextGatewayInVrf(std::uint32_t, std::uint32_t, const GatewayKey *, GatewayRecord *gateway)
{
    return answer(gateway);
}
std::uint32_t IP6Mib_GetGatewayByKey(const GatewayKey *, GatewayRecord *gateway)
{
    return answer(gateway);
}
std::uint32_t IP6ADDR_DRVK_GetGatewayByKey(const GatewayKey *, GatewayRecord *gateway)
{
    return answer(gateway);
}
std::uint32_t TIME_GetSystemBootTime(std::uint32_t *seconds, std::uint32_t *other)
{
    *seconds = source->number();
    *other = source->number();
    return 0;
}

} // extern "C"
