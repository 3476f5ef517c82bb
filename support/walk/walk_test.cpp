// SPDX-License-Identifier: BSD-3-Clause
// Walks as text: every form of a value, and what is said of mistakes.
#include "support/walk/snmprec.h"
#include "support/walk/walk_text.h"

#include <gtest/gtest.h>

using namespace ipmib::support;
using namespace std::string_literals;

namespace
{

RecordedObject only(const std::string &text)
{
    const Walk walk = parseWalk(text);
    EXPECT_EQ(walk.objects.size(), 1u) << text;
    return walk.objects.empty() ? RecordedObject() : walk.objects.front();
}

// The value as a line of an snmprec file shows it.
std::string shown(const std::string &value)
{
    const std::string line = snmprecLine(only(".1.3.6.1 = " + value + "\n"));
    return line.substr(line.find('|') + 1);
}

std::string mistake(const std::string &text)
{
    try {
        parseWalk(text);
    } catch (const WalkError &error) {
        return error.what();
    }
    return "none";
}

} // namespace

TEST(WalkText, HasEveryTypeOfValue)
{
    EXPECT_EQ(shown("INTEGER: -5"), "2|-5");
    EXPECT_EQ(shown("INTEGER: up(1)"), "2|1");
    EXPECT_EQ(shown("INTEGER: 30 seconds"), "2|30");
    EXPECT_EQ(shown("STRING: \"eth0\""), "4|eth0");
    EXPECT_EQ(shown("STRING: "), "4|");
    EXPECT_EQ(shown("\"\""), "4|");
    EXPECT_EQ(shown("STRING: \"a \\\"b\\\" \\\\ c\""), "4|a \"b\" \\ c");
    EXPECT_EQ(shown("Hex-STRING: 00 1A 2B "), "4x|001a2b");
    EXPECT_EQ(shown("OID: .1.3.6.1.4.1.8072"), "6|1.3.6.1.4.1.8072");
    EXPECT_EQ(shown("OID: .0.0"), "6|0.0");
    EXPECT_EQ(shown("IpAddress: 192.0.2.1"), "64|192.0.2.1");
    EXPECT_EQ(shown("Counter32: 4294967295"), "65|4294967295");
    EXPECT_EQ(shown("Gauge32: 100"), "66|100");
    EXPECT_EQ(shown("Timeticks: (4711) 0:00:47.11"), "67|4711");
    EXPECT_EQ(shown("Opaque: Float: 0.500000"), "68x|9f78043f000000");
    EXPECT_EQ(shown("Counter64: 18446744073709551615"), "70|18446744073709551615");
    EXPECT_EQ(shown("BITS: A0 00 0 apples(2) "), "4x|a000");
    EXPECT_EQ(shown("BITS: 00 20 10 "), "4x|0020");
    EXPECT_EQ(shown("Wrong Type (should be INTEGER): Gauge32: 7"), "66|7");
}

TEST(WalkText, ReadsValuesOfSeveralLines)
{
    const Walk walk = parseWalk(".1.3.6.1.1 = STRING: \"first\n.1.3.9 = second\r\n\nlast\"\n"
                                ".1.3.6.1.2 = Hex-STRING: 00 01 \n02 03\n"
                                ".1.3.6.1.3 = STRING: by a hint\nin two lines\n"
                                ".1.3.6.1.4 = INTEGER: 1\n");
    ASSERT_EQ(walk.objects.size(), 4u);
    EXPECT_EQ(walk.objects[0].octets, "first\n.1.3.9 = second\r\n\nlast");
    EXPECT_EQ(walk.objects[1].octets, "\0\1\2\3"s);
    EXPECT_EQ(walk.objects[2].octets, "by a hint\nin two lines");
    EXPECT_EQ(walk.hinted, 1u);
}

TEST(WalkText, KnowsLinkLayerAddressesByTheirColumns)
{
    const Walk walk = parseWalk(".1.3.6.1.2.1.2.2.1.6.1 = STRING: 0:1a:2b:3c:4d:5e\n"
                                ".1.3.6.1.2.1.2.2.1.2.1 = STRING: 0:1a\n");
    EXPECT_EQ(walk.objects.at(1).octets, "\0\x1A\x2B\x3C\x4D\x5E"s);
    EXPECT_EQ(walk.objects.at(0).octets, "0:1a");
    EXPECT_EQ(walk.hinted, 1u);
}

TEST(WalkText, SortsWhatItFindsAndTellsWhatItLeavesOut)
{
    const Walk walk =
        parseWalk("# a comment\n\niso.3.6.10 = INTEGER: 1\n.1.3.6.9 = INTEGER: 2\n.1.3.6.10 = INTEGER: 3\n"
                  ".1.3.7 = No Such Object available on this agent at this OID\n.1.3.8 = NULL\n"
                  ".1.3.9 = No more variables left in this MIB View (It is past the end of the MIB tree)\n");
    ASSERT_EQ(walk.objects.size(), 2u);
    EXPECT_EQ(snmprecLine(walk.objects[0]), "1.3.6.9|2|2");
    EXPECT_EQ(snmprecLine(walk.objects[1]), "1.3.6.10|2|1");
    ASSERT_EQ(walk.leftOut.size(), 3u);
    EXPECT_EQ(walk.leftOut[1], "line 7: 1.3.8 = NULL");
    EXPECT_EQ(walk.leftOut[2], "another value of 1.3.6.10");
}

TEST(WalkText, SaysInWhichLineWhatIsWrong)
{
    EXPECT_EQ(mistake(".1.3.1 = INTEGER: 1\nIF-MIB::ifDescr.1 = STRING: lo\n"),
              "line 2: \"IF-MIB::ifDescr.1 = STRING: lo\" does not begin with a numeric identifier and \" = \", as "
              "snmpwalk -On prints them");
    EXPECT_EQ(mistake(".1.3.1 = 5\n"), "line 1: \"5\" is not a value with its type, such as \"INTEGER: 1\"");
    EXPECT_EQ(mistake("\n.1.3.1 = INTEGER: 2147483648\n"), "line 2: \"2147483648\" is not an integer of 32 bits");
    EXPECT_EQ(mistake(".1.3.1 = Counter32: 4294967296\n"),
              "line 1: \"4294967296\" is not a number, or a larger one than its type has");
    EXPECT_EQ(mistake(".1.3.1 = Timeticks: 5\n"),
              "line 1: \"5\" is not a number of hundredths of a second in parentheses");
    EXPECT_EQ(mistake(".1.3.1 = Hex-STRING: 0G\n"), "line 1: \"0G\" is not an octet, two hexadecimal digits");
    EXPECT_EQ(mistake(".1.3.1 = STRING: \"never\nends\n"), "line 1: \"STRING: \"never?ends\" has no quote at its end");
    EXPECT_EQ(mistake(".1.3.1 = OID: SNMPv2-SMI::zeroDotZero\n"),
              "line 1: \"SNMPv2-SMI::zeroDotZero\" is not a numeric object identifier");
    EXPECT_EQ(mistake(".1.3.1 = IpAddress: 1.2.3\n"), "line 1: \"1.2.3\" is not an IPv4 address");
    EXPECT_EQ(mistake(".1.3.1 = BITS: 80 1\n"), "line 1: \"80 1\" is not octets with the bits that are set in them");
}

TEST(Snmprec, IsReadAsItIsWritten)
{
    const std::string text = "1.3.6.1|2|-1\n1.3.6.2|4|a|b\n1.3.6.3|4x|0aff\n1.3.6.4|6|1.3.6.1\n1.3.6.5|64|10.0.0.1\n"
                             "1.3.6.6|65|7\n1.3.6.7|66|8\n1.3.6.8|67|9\n1.3.6.9|68x|9f78043f000000\n1.3.6.10|70|10\n";
    std::string again;
    for (const RecordedObject &object : parseWalk(text).objects) {
        again += snmprecLine(object) + "\n";
    }
    EXPECT_EQ(again, text);
    EXPECT_EQ(only("1.3.6.5|64x|0a000001\n").octets, "\x0A\0\0\1"s);
}

TEST(Snmprec, SaysInWhichLineWhatIsWrong)
{
    EXPECT_EQ(mistake("1.3.6|2\n"), "line 1: \"1.3.6|2\" is not IDENTIFIER|TAG|VALUE");
    EXPECT_EQ(mistake("1..6|2|1\n"), "line 1: \"1..6\" is not an object identifier");
    EXPECT_EQ(mistake("1.3.6|2|1\n1.3.7|5|\n"),
              "line 2: \"5\" is not the tag of a type: 2, 4, 6, 64, 65, 66, 67, 68 or 70, or 4x, 64x or 68x for "
              "hexadecimal digits");
    EXPECT_EQ(mistake("1.3.6|4x|abc\n"), "line 1: \"abc\" is not hexadecimal digits, two an octet");
    EXPECT_EQ(mistake("1.3.6|65|-1\n"), "line 1: \"-1\" is not a number from 0 to 4294967295");
    EXPECT_EQ(mistake("1.3.6|64x|00\n"), "line 1: \"00\" is not an IPv4 address");
}
