// SPDX-License-Identifier: BSD-3-Clause
// Counters of a link, one line a column.
#include "device/link_counters.h"

namespace ipmib::simulated
{
namespace
{

using Record = IpmibInterfaceTraffic;

constexpr CounterField<Record> fields[] = {
    {"inOctets", [](Record &record) -> std::uint64_t & { return record.in.octets; }},
    {"inUcastPkts", [](Record &record) -> std::uint64_t & { return record.in.unicast; }},
    {"inMulticastPkts", [](Record &record) -> std::uint64_t & { return record.in.multicast; }},
    {"inBroadcastPkts", [](Record &record) -> std::uint64_t & { return record.in.broadcast; }},
    {"inDiscards", [](Record &record) -> std::uint64_t & { return record.in.discards; }},
    {"inErrors", [](Record &record) -> std::uint64_t & { return record.in.errors; }},
    {"inUnknownProtos", [](Record &record) -> std::uint64_t & { return record.in_unknown_protocols; }},
    {"outOctets", [](Record &record) -> std::uint64_t & { return record.out.octets; }},
    {"outUcastPkts", [](Record &record) -> std::uint64_t & { return record.out.unicast; }},
    {"outMulticastPkts", [](Record &record) -> std::uint64_t & { return record.out.multicast; }},
    {"outBroadcastPkts", [](Record &record) -> std::uint64_t & { return record.out.broadcast; }},
    {"outDiscards", [](Record &record) -> std::uint64_t & { return record.out.discards; }},
    {"outErrors", [](Record &record) -> std::uint64_t & { return record.out.errors; }},
};

} // namespace

template <>
std::span<const CounterField<IpmibInterfaceTraffic>> counterFields()
{
    return fields;
}

} // namespace ipmib::simulated
