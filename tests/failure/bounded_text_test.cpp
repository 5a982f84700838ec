// SPDX-License-Identifier: MIT
#include "failure/BoundedText.h"

#include <gtest/gtest.h>

#include <string>

using zviptv::BoundedText;

namespace {

template <std::size_t Size>
std::string Shown(std::string const& text)
{
    BoundedText<Size> shown;
    shown.Append(text);
    return shown.Text();
}

TEST(BoundedText, KeepsPrintableText)
{
    EXPECT_EQ(Shown<64>(""), "");
    EXPECT_EQ(Shown<64>("a text, \"quoted\" \\ and so on"), "a text, \"quoted\" \\ and so on");
    EXPECT_EQ(Shown<64>("Zürich, 東京, 🙂"), "Zürich, 東京, 🙂");
}

TEST(BoundedText, EscapesUnprintableCharacters)
{
    EXPECT_EQ(Shown<64>("one\ntwo\t\x1b[2Jthree\x7f"), "one\\x0atwo\\x09\\x1b[2Jthree\\x7f");
    EXPECT_EQ(Shown<64>(std::string("zero\0byte", 9)), "zero\\x00byte");
    EXPECT_EQ(Shown<64>("not UTF-8: \xff\xc3 and \xe2\x80"), "not UTF-8: \\xff\\xc3 and \\xe2\\x80");
    EXPECT_EQ(Shown<64>("control in two bytes: \xc2\x85"), "control in two bytes: \\xc2\\x85");
}

TEST(BoundedText, TruncatesBetweenCharacters)
{
    EXPECT_EQ(Shown<8>("1234"), "1234");
    EXPECT_EQ(Shown<8>("12345"), "1234...");
    EXPECT_EQ(Shown<8>("123ä"), "123...");
    EXPECT_EQ(Shown<8>("12\n"), "12...");
    EXPECT_EQ(Shown<8>(std::string(1000, 'x')), "xxxx...");
}

TEST(BoundedText, AppendsUntilFullAndRestartsWhenCleared)
{
    BoundedText<8> text;
    text.Append("12");
    text.Append("34");
    EXPECT_STREQ(text.Text(), "1234");
    text.Append("5");
    text.Append("6");
    EXPECT_STREQ(text.Text(), "1234...");
    text.Clear();
    EXPECT_STREQ(text.Text(), "");
    text.Append("7");
    EXPECT_STREQ(text.Text(), "7");
}

} // namespace
