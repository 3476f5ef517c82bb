// SPDX-License-Identifier: BSD-3-Clause
// Values as people write them.
#include "text.h"

#include <gtest/gtest.h>

namespace ipmib::cli
{
namespace
{

TEST(Text, durationsAreClocksWithDays)
{
    EXPECT_EQ(durationText(0), "00:00:00");
    EXPECT_EQ(durationText(86'399), "23:59:59");
    EXPECT_EQ(durationText(86'400), "1d 00:00:00");
    EXPECT_EQ(durationText(UINT32_MAX), "49710d 06:28:15");
}

TEST(Text, millisecondsBecomeSeconds)
{
    EXPECT_EQ(millisecondsText(0), "0ms");
    EXPECT_EQ(millisecondsText(999), "999ms");
    EXPECT_EQ(millisecondsText(1'000), "1s");
    EXPECT_EQ(millisecondsText(1'500), "1.5s");
    EXPECT_EQ(millisecondsText(30'000), "30s");
}

TEST(Text, ratesHaveThreeDigits)
{
    EXPECT_EQ(rateText(0), "0");
    EXPECT_EQ(rateText(0.25), "0.25");
    EXPECT_EQ(rateText(948.4), "948");
    EXPECT_EQ(rateText(999.4), "999");
    EXPECT_EQ(rateText(999.6), "1.00k");
    EXPECT_EQ(rateText(9'996), "10.0k");
    EXPECT_EQ(rateText(99'960), "100k");
    EXPECT_EQ(rateText(61e6), "61.0M");
    EXPECT_EQ(rateText(1.21e9), "1.21G");
    EXPECT_EQ(rateText(5e15), "5000T");
}

TEST(Text, octetsAreHexadecimal)
{
    const std::uint8_t octets[] = {0x02, 0x00, 0x5e, 0xff};
    EXPECT_EQ(hexText(octets), "02:00:5e:ff");
    EXPECT_EQ(hexText({}), "");
}

} // namespace
} // namespace ipmib::cli
