// SPDX-License-Identifier: BSD-3-Clause
// What a terminal is spared, and what it is not.
#include "support/printable.h"

#include <gtest/gtest.h>

#include <string>

namespace ipmib::support
{
namespace
{

struct Case {
    const char *what;
    std::string text;
    std::string shown;
};

const Case cases[] = {
    {"a name", "eth0.100@lan-1_x", "eth0.100@lan-1_x"},
    {"letters of other scripts", "büro-größe 日本 Ω", "büro-größe 日本 Ω"},
    {"a sign beyond the first plane", "😀", "😀"},
    {"an accent that stands for itself", "e\u0301", "e\u0301"},
    {"a space that does not break", "a\u00a0b", "a\u00a0b"},
    {"what has been made printable", R"(\x1b \u202e \U000e0001 \)", R"(\x1b \u202e \U000e0001 \)"},
    {"nothing", "", ""},
    // Controls
    {"an escape sequence", "\x1b[31mred", R"(\x1b[31mred)"},
    {"the end of a line", "a\r\nb\tc", R"(a\x0d\x0ab\x09c)"},
    {"a zero", std::string("a\0b", 3), R"(a\x00b)"},
    {"delete", "\x7f", R"(\x7f)"},
    {"C1 as UTF-8 has it", "\u0080\u009b31m\u009f", R"(\u0080\u009b31m\u009f)"},
    {"C1 as a byte",
     "\x9b"
     "31m",
     R"(\x9b31m)"},
    // The order of letters
    {"embeddings and overrides", "\u202a\u202b\u202c\u202d\u202e", R"(\u202a\u202b\u202c\u202d\u202e)"},
    {"isolates", "\u2066\u2067\u2068\u2069", R"(\u2066\u2067\u2068\u2069)"},
    {"marks of direction", "\u200e\u200f\u061c", R"(\u200e\u200f\u061c)"},
    // What cannot be seen
    {"nothing of width", "\u200b\u200c\u200d\u2060\ufeff", R"(\u200b\u200c\u200d\u2060\ufeff)"},
    {"a soft hyphen", "\u00ad", R"(\u00ad)"},
    {"separators of lines and paragraphs", "\u2028\u2029", R"(\u2028\u2029)"},
    {"fillers", "\u115f\u3164\uffa0", R"(\u115f\u3164\uffa0)"},
    {"selectors of variants", "\ufe0f\U000e0100", R"(\ufe0f\U000e0100)"},
    {"tags", "\U000e0001\U000e0041", R"(\U000e0001\U000e0041)"},
    {"for private use", "\ue000\uf8ff\U000f0000\U0010fffd", R"(\ue000\uf8ff\U000f0000\U0010fffd)"},
    {"what is no character", "\ufdd0\uffff\U0001fffe", R"(\ufdd0\uffff\U0001fffe)"},
    // What is not UTF-8
    {"a byte that continues nothing", "a\x80z", R"(a\x80z)"},
    {"a character that breaks off", "a\xe2\x80", R"(a\xe2\x80)"},
    {"a character with a letter in it", "\xe2\x80z", R"(\xe2\x80z)"},
    {"more bytes than needed", "\xc0\x9b\xe0\x80\x9b\xf0\x80\x80\x9b", R"(\xc0\x9b\xe0\x80\x9b\xf0\x80\x80\x9b)"},
    {"a surrogate", "\xed\xa0\x80", R"(\xed\xa0\x80)"},
    {"beyond the last character", "\xf4\x90\x80\x80\xf8\xff", R"(\xf4\x90\x80\x80\xf8\xff)"},
};

TEST(Printable, whatIsNotIsWrittenAsANumber)
{
    for (const Case &one : cases) {
        EXPECT_EQ(printable(one.text), one.shown) << one.what;
        EXPECT_EQ(printable(one.shown), one.shown) << one.what;
    }
}

TEST(Printable, theNeighboursOfARangeStay)
{
    const std::string text = " ~\u00a0\u00ac\u00ae\u200a\u2010\u2027\u202f\u205f\u2070\ufdcf\ufdf0\ufffc\ufffd";
    EXPECT_EQ(printable(text), text);
}

TEST(Printable, noByteOfAnyTextActsOnATerminal)
{
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            const std::string text = {static_cast<char>(first), static_cast<char>(second)};
            const std::string shown = printable(text);
            for (std::size_t i = 0; i < shown.size(); ++i) {
                const auto byte = static_cast<unsigned char>(shown[i]);
                ASSERT_TRUE(byte >= 0x20 && byte != 0x7F) << shown;
                if (byte < 0x80) {
                    continue;
                }
                ASSERT_EQ(shown, text) << "all of it is one character";
                ASSERT_FALSE(first == 0xC2 && second < 0xA0) << "C1";
            }
        }
    }
}

} // namespace
} // namespace ipmib::support
