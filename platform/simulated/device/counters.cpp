// SPDX-License-Identifier: BSD-3-Clause
// Counters that begin at a value and grow evenly.
#include "device/counters.h"

#include <charconv>
#include <limits>

namespace ipmib::simulated
{
namespace
{

constexpr double fastest = 1e12; // a second
constexpr double perSecond = 1'000;

constexpr CounterField<Ip6MibStat> ip6Fields[] = {
    {"inReceives", &Ip6MibStat::in_receives},
    {"inOctets", &Ip6MibStat::in_octets},
    {"inHdrErrors", &Ip6MibStat::header_errors_1},
    {"inNoRoutes", &Ip6MibStat::in_no_routes},
    {"inAddrErrors", &Ip6MibStat::address_errors},
    {"inUnknownProtos", &Ip6MibStat::unknown_protos},
    {"inTruncatedPkts", &Ip6MibStat::in_truncated},
    {"inForwDatagrams", &Ip6MibStat::in_forwarded},
    {"reasmReqds", &Ip6MibStat::reasm_required},
    {"reasmOKs", &Ip6MibStat::reasm_oks},
    {"reasmFails", &Ip6MibStat::reasm_fails_1},
    {"inDiscards", &Ip6MibStat::in_discards},
    {"inDelivers", &Ip6MibStat::in_delivers},
    {"inMcastPkts", &Ip6MibStat::in_mcast_pkts},
    {"outRequests", &Ip6MibStat::out_requests},
    {"outNoRoutes", &Ip6MibStat::out_no_routes},
    {"outForwDatagrams", &Ip6MibStat::out_forwarded},
    {"outDiscards", &Ip6MibStat::out_discards},
    {"outFragOKs", &Ip6MibStat::frag_oks},
    {"outFragFails", &Ip6MibStat::frag_fails},
    {"outFragCreates", &Ip6MibStat::frag_creates},
    {"outTransmits", &Ip6MibStat::out_transmits},
    {"outOctets", &Ip6MibStat::out_octets},
    {"outMcastPkts", &Ip6MibStat::out_mcast_pkts},
};

constexpr CounterField<IpMibIfStat> ip4Fields[] = {
    {"inReceives", &IpMibIfStat::in_receives},   {"inOctets", &IpMibIfStat::in_octets},
    {"inDiscards", &IpMibIfStat::in_discards},   {"inMcastPkts", &IpMibIfStat::in_mcast_pkts},
    {"outRequests", &IpMibIfStat::out_requests}, {"outForwDatagrams", &IpMibIfStat::out_forwarded},
    {"outDiscards", &IpMibIfStat::out_discards}, {"outTransmits", &IpMibIfStat::out_transmits},
    {"outOctets", &IpMibIfStat::out_octets},     {"outMcastPkts", &IpMibIfStat::out_mcast_pkts},
};

Counter counterOr0(Object &object, const char *name)
{
    const auto member = object.find(name);
    return member ? Counter::read(*member) : Counter{};
}

std::optional<Counter> counter(Object &object, const char *name)
{
    const auto member = object.find(name);
    return member ? std::optional(Counter::read(*member)) : std::nullopt;
}

} // namespace

template <>
std::span<const CounterField<Ip6MibStat>> counterFields()
{
    return ip6Fields;
}

template <>
std::span<const CounterField<IpMibIfStat>> counterFields()
{
    return ip4Fields;
}

Counter Counter::read(const Value &value)
{
    constexpr auto greatest = std::numeric_limits<std::uint64_t>::max();
    if (!value.isObject()) {
        return {value.number(0, greatest), 0};
    }
    Object object(value);
    Counter counter;
    if (const auto start = object.find("start")) {
        counter.start = start->number(0, greatest);
    }
    if (const auto rate = object.find("rate")) {
        counter.rate = rate->real(0, fastest);
    }
    object.finish();
    return counter;
}

std::uint64_t Counter::after(Time running) const
{
    return start + static_cast<std::uint64_t>(rate * static_cast<double>(running) / perSecond);
}

IcmpCounters IcmpCounters::read(const Value &value)
{
    IcmpCounters counters;
    Object object(value);
    counters.inMsgs_ = counter(object, "inMsgs");
    counters.outMsgs_ = counter(object, "outMsgs");
    counters.inErrors_ = counterOr0(object, "inErrors");
    if (const auto types = object.find("types")) {
        Object(*types).each([&counters](const std::string &name, const Value &type) {
            Type read{};
            const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), read.number);
            if (error != std::errc() || end != name.data() + name.size() || std::to_string(read.number) != name) {
                type.fail("the name of an ICMPv6 type is a number from 0 to 255");
            }
            Object inAndOut(type);
            read.in = counterOr0(inAndOut, "in");
            read.out = counterOr0(inAndOut, "out");
            inAndOut.finish();
            counters.types_.push_back(read);
        });
    }
    object.finish();
    return counters;
}

void IcmpCounters::setIn(Icmp6MibStat &record, Time running) const
{
    std::uint64_t in = 0;
    std::uint64_t out = 0;
    for (const Type &type : types_) {
        record.counter[ICMP6_STAT_IN_TYPE + type.number] = static_cast<std::uint32_t>(type.in.after(running));
        record.counter[ICMP6_STAT_OUT_TYPE + type.number] = static_cast<std::uint32_t>(type.out.after(running));
        in += type.in.after(running);
        out += type.out.after(running);
    }
    record.counter[ICMP6_STAT_IN_MSGS] = static_cast<std::uint32_t>(inMsgs_ ? inMsgs_->after(running) : in);
    record.counter[ICMP6_STAT_OUT_MSGS] = static_cast<std::uint32_t>(outMsgs_ ? outMsgs_->after(running) : out);
    record.counter[ICMP6_STAT_IN_ERROR_1] = static_cast<std::uint32_t>(inErrors_.after(running));
}

} // namespace ipmib::simulated
