// SPDX-License-Identifier: BSD-3-Clause
// Binary counters of every kernel generation are told by comparing them with the names, once.
#include "counters/counter_layout.h"

#include <gtest/gtest.h>

#include <vector>

namespace
{

using namespace ipmib::platform;
using enum Ip6Counter;
using Array = std::vector<std::uint64_t>;

// 100 received, 90 delivered, all of them without congestion marks; 7 sent, of 700 octets.
Ip6Counters named()
{
    Ip6Counters counters;
    counters.set(inReceives, 100);
    counters.set(inOctets, 10'000);
    counters.set(inDelivers, 90);
    counters.set(outRequests, 7);
    counters.set(outOctets, 700);
    return counters;
}

// What Linux up to 6.6 makes of it, 6.7 to 6.14, and since 6.15.
Array upTo66()
{
    Array array(37);
    array[0] = 37;
    array[1] = 100;
    array[2] = 10'000;
    array[3] = 90;
    array[5] = 7;
    array[6] = 700;
    array[32] = 100;
    return array;
}

Array upTo614()
{
    Array array = upTo66();
    array.push_back(8);
    return array;
}

Array since615()
{
    Array array(38);
    array[0] = 38;
    array[1] = 100;
    array[2] = 10'000;
    array[3] = 90;
    array[4] = 100;
    array[8] = 7;
    array[9] = 8;
    array[10] = 700;
    return array;
}

class Source
{
  public:
    explicit Source(Array later) : later_(std::move(later)) {}
    CounterLayout::Source operator()()
    {
        return {[this] {
                    ++asked;
                    return names;
                },
                [this]() -> std::optional<CounterLayout::Array> { return CounterLayout::Array(later_); }};
    }

    unsigned asked = 0;
    std::optional<Ip6Counters> names = [] {
        Ip6Counters counters = named();
        counters.set(outTransmits, 8);
        return counters;
    }();

  private:
    Array later_;
};

void expectNamed(const std::optional<Ip6Counters> &counters, std::uint64_t transmits)
{
    ASSERT_TRUE(counters);
    for (const Ip6Counter which : {inReceives, inOctets, inDelivers, outRequests, outOctets, outForwDatagrams}) {
        EXPECT_EQ((*counters)[which], named()[which]) << static_cast<int>(which);
    }
    EXPECT_EQ((*counters)[outTransmits], transmits);
}

TEST(CounterLayout, anArrayOfTheFirstSizeHasTheFirstOrder)
{
    Source source(upTo66());
    CounterLayout layout;
    expectNamed(layout.decode(upTo66(), source()), 0);
    EXPECT_EQ(source.asked, 0u);
    EXPECT_TRUE(layout.settled());
}

TEST(CounterLayout, ordersOfOneSizeAreToldApartOnce)
{
    for (const Array &array : {upTo614(), since615()}) {
        Source source(array);
        CounterLayout layout;
        EXPECT_FALSE(layout.settled());
        expectNamed(layout.decode(array, source()), 8);
        EXPECT_TRUE(layout.settled());
        expectNamed(layout.decode(array, source()), 8);
        EXPECT_EQ(source.asked, 1u);
    }
}

TEST(CounterLayout, countersMayMoveBetweenTheReadings)
{
    Array later = since615();
    later[1] += 5;
    later[4] += 5;
    Source source(later);
    source.names->set(inReceives, 103);
    CounterLayout layout;
    EXPECT_EQ((*layout.decode(since615(), source()))[inReceives], 103u);
    EXPECT_TRUE(layout.settled());
    EXPECT_EQ((*layout.decode(since615(), source()))[outRequests], 7u);
}

TEST(CounterLayout, countersThatAllOrdersAgreeOnNeedNoNames)
{
    Array quiet(38);
    quiet[0] = 38;
    Source source(quiet);
    CounterLayout layout;
    EXPECT_EQ((*layout.decode(quiet, source()))[inReceives], 0u);
    EXPECT_EQ(source.asked, 0u);
    EXPECT_FALSE(layout.settled());
}

TEST(CounterLayout, anUnknownOrderIsReadByName)
{
    Array unknown = since615();
    std::swap(unknown[1], unknown[2]);
    Source source(unknown);
    CounterLayout layout;
    for (unsigned reading = 1; reading <= 3; ++reading) {
        expectNamed(layout.decode(unknown, source()), 8);
        EXPECT_EQ(source.asked, reading);
    }
}

TEST(CounterLayout, withoutNamesNothingIsGuessed)
{
    Source source(since615());
    source.names.reset();
    CounterLayout layout;
    EXPECT_FALSE(layout.decode(since615(), source()));
    EXPECT_FALSE(layout.settled());
}

TEST(CounterLayout, aTruncatedArrayIsNoDanger)
{
    Source source({});
    CounterLayout layout;
    EXPECT_EQ((*layout.decode({}, source()))[inReceives], 0u);
    const Array few{3, 1, 2};
    EXPECT_EQ((*CounterLayout().decode(few, source()))[inOctets], 2u);
}

} // namespace
