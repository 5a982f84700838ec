// SPDX-License-Identifier: MIT
#include "commands/Arguments.h"

#include "output/Failure.h"

#include <gmock/gmock.h>

#include <functional>

using namespace zviptv::ctl;

namespace {

ArgumentPlace const Place{"SetCurrentTTX", "index"};

template <typename Value>
Value Parse(std::string const& text)
{
    return ParseArgument<Value>(text, Place);
}

/// The message of the usage error that `work` must end with.
std::string UsageError(std::function<void()> const& work)
{
    try {
        work();
    } catch (Failure const& failure) {
        EXPECT_EQ(failure.Code(), ExitCode::Usage);
        return failure.what();
    }
    ADD_FAILURE() << "no failure";
    return {};
}

template <typename Value>
bool Refuses(std::string const& text)
{
    return !UsageError([&] { Parse<Value>(text); }).empty();
}

TEST(ArgumentsTest, UnsignedNumbers)
{
    EXPECT_EQ(Parse<unsigned int>("0"), 0U);
    EXPECT_EQ(Parse<unsigned int>("010"), 10U);
    EXPECT_EQ(Parse<unsigned int>("4294967295"), 4294967295U);
    EXPECT_EQ(Parse<unsigned int>("0xFFFFffff"), 4294967295U);
    EXPECT_EQ(Parse<std::uint16_t>("65535"), 65535U);
    EXPECT_EQ(Parse<unsigned long long>("18446744073709551615"), 18446744073709551615ULL);
    for (char const* text : {"", "x", "-1", "+1", " 1", "1 ", "1.0", "0x", "0xg", "4294967296", "1e3"}) {
        EXPECT_TRUE(Refuses<unsigned int>(text)) << text;
    }
    EXPECT_TRUE(Refuses<std::uint16_t>("65536"));
    EXPECT_TRUE(Refuses<unsigned long long>("18446744073709551616"));
}

TEST(ArgumentsTest, SignedNumbers)
{
    EXPECT_EQ(Parse<int>("-2147483648"), -2147483647 - 1);
    EXPECT_EQ(Parse<int>("0x7fffffff"), 2147483647);
    EXPECT_EQ(Parse<int>("-0x10"), -16);
    for (char const* text :
         {"", "-", "--1", "2147483648", "-2147483649", "-9223372036854775809", "0x80000000"}) {
        EXPECT_TRUE(Refuses<int>(text)) << text;
    }
}

TEST(ArgumentsTest, MessagesNameTheExpectedForm)
{
    EXPECT_EQ(UsageError([] { Parse<unsigned int>("x"); }),
              "argument 'index' of SetCurrentTTX is an unsigned 32-bit number (0 to 4294967295), not 'x'");
    EXPECT_EQ(
        UsageError([] { Parse<int>("1.5"); }),
        "argument 'index' of SetCurrentTTX is a signed 32-bit number (-2147483648 to 2147483647), not '1.5'");
    EXPECT_EQ(UsageError([] { Parse<bool>("2"); }),
              "argument 'index' of SetCurrentTTX is 1, true or on, or 0, false or off, not '2'");
    EXPECT_EQ(UsageError([] { Parse<EZVISDBTextType>("subtitle"); }),
              "argument 'index' of SetCurrentTTX is EZVISDBTextType: CAPTION (0), SUPERIMPOSE (1) or another "
              "signed "
              "32-bit number, not 'subtitle'");
    EXPECT_EQ(UsageError([] {
                  ParseCount("0", {"pes", "--count"});
              }),
              "option '--count' of pes is a number above 0, not '0'");
}

TEST(ArgumentsTest, Flags)
{
    for (char const* text : {"1", "true", "on", "On", "TRUE"}) {
        EXPECT_TRUE(Parse<bool>(text)) << text;
    }
    for (char const* text : {"0", "false", "off"}) {
        EXPECT_FALSE(Parse<bool>(text)) << text;
    }
    EXPECT_TRUE(Refuses<bool>("yes"));
    EXPECT_TRUE(Refuses<bool>(""));
}

TEST(ArgumentsTest, Enumerations)
{
    EXPECT_EQ(Parse<EZVAudioEncodeType>("AC3"), ZV_AUDIO_ENCODE_AC3);
    EXPECT_EQ(Parse<EZVAudioEncodeType>("ac3"), ZV_AUDIO_ENCODE_AC3);
    EXPECT_EQ(Parse<EZVAudioEncodeType>("ZV_AUDIO_ENCODE_AC3"), ZV_AUDIO_ENCODE_AC3);
    EXPECT_EQ(Parse<EZVAudioEncodeType>("2"), ZV_AUDIO_ENCODE_AC3);
    EXPECT_EQ(Parse<EZVAudioEncodeType>("77"), 77);
    EXPECT_EQ(Parse<Program_IPG>("previous"), PROGRAM_IPG_PREVIOUS);
    EXPECT_EQ(Parse<Program_IPG>("-1"), -1);
    EXPECT_EQ(Parse<EZVParentalLock>("UNLOCKED_ALL"), ZV_PARENTAL_UNLOCKED_ALL);
    EXPECT_EQ(Parse<cvtv_resolution_e>("8k"), CVTV_RESOLUTION_8K);
    EXPECT_TRUE(Refuses<Program_IPG>("2147483648"));
    EXPECT_TRUE(Refuses<Program_IPG>("ZV_NEXT"));
    EXPECT_TRUE(Refuses<Program_IPG>(""));
}

TEST(ArgumentsTest, Seconds)
{
    ArgumentPlace const seconds{"pes", "--seconds"};
    EXPECT_EQ(ParseSeconds("2.5", seconds), std::chrono::milliseconds(2500));
    EXPECT_EQ(ParseSeconds("0.001", seconds), std::chrono::milliseconds(1));
    for (char const* text : {"", "0", "-1", "nan", "inf", "1s", "1000001", "1e3", "0x10"}) {
        EXPECT_THAT(UsageError([&] { ParseSeconds(text, seconds); }),
                    testing::HasSubstr("a number of seconds"));
    }
}

} // namespace
