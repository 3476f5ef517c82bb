// SPDX-License-Identifier: BSD-3-Clause
// Counters that begin at a value and grow.
#include "device/counters.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <limits>

namespace ipmib::simulated
{
namespace
{

constexpr CounterField<IpmibIpCounters> ipFields[] = {
    {"inReceives", IPMIB_IP_IN_RECEIVES},
    {"inOctets", IPMIB_IP_IN_OCTETS},
    {"inHdrErrors", IPMIB_IP_IN_HDR_ERRORS},
    {"inNoRoutes", IPMIB_IP_IN_NO_ROUTES},
    {"inAddrErrors", IPMIB_IP_IN_ADDR_ERRORS},
    {"inUnknownProtos", IPMIB_IP_IN_UNKNOWN_PROTOS},
    {"inTruncatedPkts", IPMIB_IP_IN_TRUNCATED_PKTS},
    {"inForwDatagrams", IPMIB_IP_IN_FORW_DATAGRAMS},
    {"reasmReqds", IPMIB_IP_REASM_REQDS},
    {"reasmOKs", IPMIB_IP_REASM_OKS},
    {"reasmFails", IPMIB_IP_REASM_FAILS},
    {"inDiscards", IPMIB_IP_IN_DISCARDS},
    {"inDelivers", IPMIB_IP_IN_DELIVERS},
    {"inMcastPkts", IPMIB_IP_IN_MCAST_PKTS},
    {"inMcastOctets", IPMIB_IP_IN_MCAST_OCTETS},
    {"inBcastPkts", IPMIB_IP_IN_BCAST_PKTS},
    {"outRequests", IPMIB_IP_OUT_REQUESTS},
    {"outNoRoutes", IPMIB_IP_OUT_NO_ROUTES},
    {"outForwDatagrams", IPMIB_IP_OUT_FORW_DATAGRAMS},
    {"outDiscards", IPMIB_IP_OUT_DISCARDS},
    {"outFragReqds", IPMIB_IP_OUT_FRAG_REQDS},
    {"outFragOKs", IPMIB_IP_OUT_FRAG_OKS},
    {"outFragFails", IPMIB_IP_OUT_FRAG_FAILS},
    {"outFragCreates", IPMIB_IP_OUT_FRAG_CREATES},
    {"outTransmits", IPMIB_IP_OUT_TRANSMITS},
    {"outOctets", IPMIB_IP_OUT_OCTETS},
    {"outMcastPkts", IPMIB_IP_OUT_MCAST_PKTS},
    {"outMcastOctets", IPMIB_IP_OUT_MCAST_OCTETS},
    {"outBcastPkts", IPMIB_IP_OUT_BCAST_PKTS},
    {"routingDiscards", IPMIB_IP_ROUTING_DISCARDS},
};

constexpr CounterField<IpmibTcpCounters> tcpFields[] = {
    {"activeOpens", &IpmibTcpCounters::active_opens},
    {"passiveOpens", &IpmibTcpCounters::passive_opens},
    {"attemptFails", &IpmibTcpCounters::attempt_fails},
    {"estabResets", &IpmibTcpCounters::established_resets},
    {"inSegs", &IpmibTcpCounters::in_segments},
    {"outSegs", &IpmibTcpCounters::out_segments},
    {"retransSegs", &IpmibTcpCounters::retransmitted_segments},
    {"inErrs", &IpmibTcpCounters::in_errors},
    {"outRsts", &IpmibTcpCounters::out_resets},
};

constexpr CounterField<IpmibUdpCounters> udpFields[] = {
    {"inDatagrams", &IpmibUdpCounters::in_datagrams},
    {"noPorts", &IpmibUdpCounters::no_ports},
    {"inErrors", &IpmibUdpCounters::in_errors},
    {"outDatagrams", &IpmibUdpCounters::out_datagrams},
};

constexpr auto greatest = std::numeric_limits<std::uint64_t>::max();

// A number, or so many counts before a counter of 32 or 64 bits begins anew.
std::uint64_t readStart(const Value &value)
{
    if (!value.isObject()) {
        return value.number(0, greatest);
    }
    Object object(value);
    constexpr std::uint64_t greatest32 = UINT32_MAX;
    const auto bits = object.find("bits");
    const bool is32 = bits && bits->json() == 32;
    if (bits && !is32 && bits->json() != 64) {
        bits->refuse("32 or 64");
    }
    const std::uint64_t left = object.need("beforeWrap").number(1, is32 ? greatest32 : greatest);
    object.finish();
    return (is32 ? greatest32 + 1 : 0) - left;
}

std::optional<Counter> counter(Object &object, const char *name)
{
    const auto member = object.find(name);
    return member ? std::optional(Counter::read(*member)) : std::nullopt;
}

} // namespace

template <>
std::span<const CounterField<IpmibIpCounters>> counterFields()
{
    return ipFields;
}

template <>
std::span<const CounterField<IpmibTcpCounters>> counterFields()
{
    return tcpFields;
}

template <>
std::span<const CounterField<IpmibUdpCounters>> counterFields()
{
    return udpFields;
}

Counter Counter::read(const Value &value)
{
    return Counter().changed(value, 0);
}

void Counter::readResets(const Value &value, Time age)
{
    Object times(value);
    Resets resets{age + readSeconds(times.need("at")), 0};
    if (const auto every = times.find("every")) {
        constexpr double shortest = 0.001;
        every->real(shortest, longestSeconds);
        resets.every = readSeconds(*every);
    }
    times.finish();
    resets_ = std::make_shared<const Resets>(resets);
}

Counter Counter::changed(const Value &value, Time running) const
{
    Counter counter;
    counter.begun_ = running;
    if (!value.isObject()) {
        counter.start_ = value.number(0, greatest);
        return counter;
    }
    Object object(value);
    const auto start = object.find("start");
    counter.start_ = start ? readStart(*start) : after(running);
    if (const auto rate = object.find("rate")) {
        counter.growth_ = Growth::read(*rate);
    } else {
        counter.growth_ = growth_;
        counter.begun_ = begun_;
        counter.start_ -= growth_.after(running - begun_);
    }
    if (const auto reset = object.find("reset")) {
        counter.readResets(*reset, running - counter.begun_);
    }
    object.finish();
    return counter;
}

std::uint64_t Counter::after(Time running) const
{
    const Time age = running - begun_;
    const std::uint64_t grown = growth_.after(age);
    if (resets_ == nullptr || age < resets_->at) {
        return start_ + grown;
    }
    const Time since = age - resets_->at;
    return grown - growth_.after(age - (resets_->every == 0 ? since : since % resets_->every));
}

IcmpCounters IcmpCounters::read(const Value &value)
{
    IcmpCounters counters;
    Object object(value);
    counters.inMsgs_ = counter(object, "inMsgs");
    counters.outMsgs_ = counter(object, "outMsgs");
    counters.inErrors_ = counter(object, "inErrors");
    if (const auto types = object.find("types")) {
        Object(*types).each([&counters](const std::string &name, const Value &type) {
            Type read{};
            const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), read.number);
            if (error != std::errc() || end != name.data() + name.size() || std::to_string(read.number) != name) {
                type.fail("the name of an ICMP type is a number from 0 to 255");
            }
            Object inAndOut(type);
            read.in = counter(inAndOut, "in").value_or(Counter{});
            read.out = counter(inAndOut, "out").value_or(Counter{});
            inAndOut.finish();
            counters.types_.push_back(read);
        });
    }
    object.finish();
    return counters;
}

IpmibIcmpCounters IcmpCounters::after(Time running) const
{
    IpmibIcmpCounters counters{};
    for (const Type &type : types_) {
        counters.in_type[type.number] = type.in.after(running);
        counters.out_type[type.number] = type.out.after(running);
        counters.listed[type.number / 8] |= static_cast<std::uint8_t>(1 << type.number % 8);
        counters.in_msgs += counters.in_type[type.number];
        counters.out_msgs += counters.out_type[type.number];
    }
    const auto setTo = [running](std::uint64_t &place, const std::optional<Counter> &said) {
        if (said) {
            place = said->after(running);
        }
    };
    setTo(counters.in_msgs, inMsgs_);
    setTo(counters.out_msgs, outMsgs_);
    setTo(counters.in_errors, inErrors_);
    return counters;
}

Ip6MibStat ip6MibStatOf(const IpmibIpCounters &counters)
{
    const std::uint64_t *value = counters.value;
    const auto low = [value](unsigned which) { return static_cast<std::uint32_t>(value[which]); };
    Ip6MibStat stat{};
    stat.in_receives = value[IPMIB_IP_IN_RECEIVES];
    stat.in_octets = value[IPMIB_IP_IN_OCTETS];
    stat.header_errors_1 = low(IPMIB_IP_IN_HDR_ERRORS);
    stat.in_no_routes = low(IPMIB_IP_IN_NO_ROUTES);
    stat.address_errors = low(IPMIB_IP_IN_ADDR_ERRORS);
    stat.unknown_protos = low(IPMIB_IP_IN_UNKNOWN_PROTOS);
    stat.in_truncated = low(IPMIB_IP_IN_TRUNCATED_PKTS);
    stat.in_forwarded = value[IPMIB_IP_IN_FORW_DATAGRAMS];
    stat.reasm_required = low(IPMIB_IP_REASM_REQDS);
    stat.reasm_oks = low(IPMIB_IP_REASM_OKS);
    stat.reasm_fails_1 = low(IPMIB_IP_REASM_FAILS);
    stat.in_discards = low(IPMIB_IP_IN_DISCARDS);
    stat.in_delivers = low(IPMIB_IP_IN_DELIVERS);
    stat.in_mcast_pkts = low(IPMIB_IP_IN_MCAST_PKTS);
    stat.out_requests = value[IPMIB_IP_OUT_REQUESTS];
    stat.out_no_routes = low(IPMIB_IP_OUT_NO_ROUTES);
    stat.out_forwarded = value[IPMIB_IP_OUT_FORW_DATAGRAMS];
    stat.out_discards = low(IPMIB_IP_OUT_DISCARDS);
    stat.frag_oks = low(IPMIB_IP_OUT_FRAG_OKS);
    stat.frag_fails = low(IPMIB_IP_OUT_FRAG_FAILS);
    stat.frag_creates = low(IPMIB_IP_OUT_FRAG_CREATES);
    stat.out_transmits = value[IPMIB_IP_OUT_TRANSMITS];
    stat.out_octets = value[IPMIB_IP_OUT_OCTETS];
    stat.out_mcast_pkts = low(IPMIB_IP_OUT_MCAST_PKTS);
    return stat;
}

IpMibIfStat ipMibIfStatOf(const IpmibIpCounters &counters)
{
    const std::uint64_t *value = counters.value;
    IpMibIfStat stat{};
    stat.in_receives = value[IPMIB_IP_IN_RECEIVES];
    stat.in_octets = value[IPMIB_IP_IN_OCTETS];
    stat.in_discards = value[IPMIB_IP_IN_DISCARDS];
    stat.in_mcast_pkts = value[IPMIB_IP_IN_MCAST_PKTS];
    stat.out_requests = value[IPMIB_IP_OUT_REQUESTS];
    stat.out_forwarded = value[IPMIB_IP_OUT_FORW_DATAGRAMS];
    stat.out_discards = value[IPMIB_IP_OUT_DISCARDS];
    stat.out_transmits = value[IPMIB_IP_OUT_TRANSMITS];
    stat.out_octets = value[IPMIB_IP_OUT_OCTETS];
    stat.out_mcast_pkts = value[IPMIB_IP_OUT_MCAST_PKTS];
    return stat;
}

Icmp6MibStat icmp6MibStatOf(const IpmibIcmpCounters &counters)
{
    Icmp6MibStat stat{};
    for (unsigned type = 0; type < 256; ++type) {
        stat.counter[ICMP6_STAT_IN_TYPE + type] = static_cast<std::uint32_t>(counters.in_type[type]);
        stat.counter[ICMP6_STAT_OUT_TYPE + type] = static_cast<std::uint32_t>(counters.out_type[type]);
    }
    stat.counter[ICMP6_STAT_IN_MSGS] = static_cast<std::uint32_t>(counters.in_msgs);
    stat.counter[ICMP6_STAT_OUT_MSGS] = static_cast<std::uint32_t>(counters.out_msgs);
    stat.counter[ICMP6_STAT_IN_ERROR_1] = static_cast<std::uint32_t>(counters.in_errors);
    return stat;
}

} // namespace ipmib::simulated
