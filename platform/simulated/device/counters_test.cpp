// SPDX-License-Identifier: BSD-3-Clause
// Counters: their value at a time, their names, and where each one goes.
#include "device/counters.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace ipmib::simulated
{
namespace
{

template <class Read>
auto read(const char *text)
{
    const Json json = Json::parse(text);
    return Read::read(Value(json));
}

TEST(Counter, growsEvenlyFromItsStart)
{
    const auto counter = read<Counter>(R"({"start": 100, "rate": 2.5})");
    EXPECT_EQ(counter.after(0), 100u);
    EXPECT_EQ(counter.after(399), 100u);
    EXPECT_EQ(counter.after(400), 101u);
    EXPECT_EQ(counter.after(1'000'000), 2'600u);
    EXPECT_EQ(read<Counter>("7").after(1'000'000), 7u);
}

TEST(Counter, wrapsAsCountersDo)
{
    const auto counter = read<Counter>(R"({"start": 18446744073709551615, "rate": 1})");
    EXPECT_EQ(counter.after(0), UINT64_MAX);
    EXPECT_EQ(counter.after(1'000), 0u);
    const auto set = read<CounterSet<IpmibIpCounters>>(R"({"inDiscards": {"start": 4294967295, "rate": 1}})");
    IpmibIpCounters counters{};
    set.setIn(counters, 2'000);
    EXPECT_EQ(ip6MibStatOf(counters).in_discards, 1u);
}

// The highest rate, at the latest time that a device can be shown at.
TEST(Counter, wrapsAlsoWhenItsGrowthAloneIsBeyondIt)
{
    const auto counter = read<Counter>(R"({"start": 5, "rate": 1e12})");
    constexpr std::uint64_t latest = 100'000'000'000;             // ms
    constexpr std::uint64_t expected = 7'766'279'631'452'241'920; // 1e20 modulo 2^64
    constexpr std::uint64_t grain = 32'768;                       // of a number with a fraction, at 1e20
    EXPECT_LE(counter.after(latest) - expected + grain, 2 * grain);
    EXPECT_LE(counter.after(latest + 1'000) - expected - 1'000'000'000'000 + grain, 2 * grain);
}

template <class Record>
void expectDistinctPlaces()
{
    for (const auto &field : counterFields<Record>()) {
        Record record{};
        field.in(record) = 5;
        for (const auto &other : counterFields<Record>()) {
            EXPECT_EQ(other.in(record), &other == &field ? 5u : 0u) << field.name << " and " << other.name;
        }
    }
}

TEST(CounterSet, everyNameHasAPlaceOfItsOwn)
{
    expectDistinctPlaces<IpmibIpCounters>();
    expectDistinctPlaces<IpmibTcpCounters>();
    expectDistinctPlaces<IpmibUdpCounters>();
}

TEST(CounterSet, whatIsNotNamedStaysAndSumsAddUp)
{
    const auto set = read<CounterSet<IpmibIpCounters>>(R"({"inReceives": {"start": 4294967296, "rate": 1}})");
    IpmibIpCounters counters{};
    counters.value[IPMIB_IP_IN_OCTETS] = 3;
    set.addTo(counters, 5'000);
    set.addTo(counters, 1'000);
    EXPECT_EQ(counters.value[IPMIB_IP_IN_RECEIVES], 2 * 4'294'967'296u + 6);
    EXPECT_EQ(counters.value[IPMIB_IP_IN_OCTETS], 3u);
    EXPECT_EQ(counters.counted, 1u << IPMIB_IP_IN_RECEIVES);
}

TEST(IcmpCounters, messagesAreTheSumOfTheirTypesUnlessSaidOtherwise)
{
    Icmp6MibStat stat = icmp6MibStatOf(
        read<IcmpCounters>(R"({"types": {"1": {"in": 2}, "128": {"in": 3, "out": {"rate": 4}}}})").after(1'000));
    EXPECT_EQ(stat.counter[ICMP6_STAT_IN_TYPE + 1], 2u);
    EXPECT_EQ(stat.counter[ICMP6_STAT_IN_TYPE + 128], 3u);
    EXPECT_EQ(stat.counter[ICMP6_STAT_OUT_TYPE + 128], 4u);
    EXPECT_EQ(stat.counter[ICMP6_STAT_IN_MSGS], 5u);
    EXPECT_EQ(stat.counter[ICMP6_STAT_OUT_MSGS], 4u);
    stat = icmp6MibStatOf(read<IcmpCounters>(R"({"inMsgs": 70, "inErrors": 8, "types": {"1": {"in": 2}}})").after(0));
    EXPECT_EQ(stat.counter[ICMP6_STAT_IN_MSGS], 70u);
    EXPECT_EQ(stat.counter[ICMP6_STAT_IN_ERROR_1], 8u);
}

} // namespace
} // namespace ipmib::simulated
