#include "commands/Arguments.h"

#include "output/Failure.h"

#include <gmock/gmock.h>

#include <functional>

using namespace zviptv::ctl;

namespace {

ArgumentPlace const place{"SetCurrentTTX", "index"};

template <typename Value>
Value Parse(std::string const& text)
{
    return ParseArgument<Value>(text, place);
}

/// The message of the usage error that `work` must end with.
std::string UsageError(std::function<void()> const& work)
{
    try {
        work();
    } catch (Failure const& failure) {
        EXPECT_EQ(ExitCode::Usage, failure.Code());
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
    EXPECT_EQ(0U, Parse<unsigned int>("0"));
    EXPECT_EQ(10U, Parse<unsigned int>("010"));
    EXPECT_EQ(4294967295U, Parse<unsigned int>("4294967295"));
    EXPECT_EQ(4294967295U, Parse<unsigned int>("0xFFFFffff"));
    EXPECT_EQ(65535U, Parse<std::uint16_t>("65535"));
    EXPECT_EQ(18446744073709551615ULL, Parse<unsigned long long>("18446744073709551615"));
    for (char const* text : {"", "x", "-1", "+1", " 1", "1 ", "1.0", "0x", "0xg", "4294967296", "1e3"}) {
        EXPECT_TRUE(Refuses<unsigned int>(text)) << text;
    }
    EXPECT_TRUE(Refuses<std::uint16_t>("65536"));
    EXPECT_TRUE(Refuses<unsigned long long>("18446744073709551616"));
}

TEST(ArgumentsTest, SignedNumbers)
{
    EXPECT_EQ(-2147483647 - 1, Parse<int>("-2147483648"));
    EXPECT_EQ(2147483647, Parse<int>("0x7fffffff"));
    EXPECT_EQ(-16, Parse<int>("-0x10"));
    for (char const* text :
         {"", "-", "--1", "2147483648", "-2147483649", "-9223372036854775809", "0x80000000"}) {
        EXPECT_TRUE(Refuses<int>(text)) << text;
    }
}

TEST(ArgumentsTest, MessagesSayWhatIsExpected)
{
    EXPECT_EQ("argument 'index' of SetCurrentTTX is an unsigned 32-bit number (0 to 4294967295), not 'x'",
              UsageError([] { Parse<unsigned int>("x"); }));
    EXPECT_EQ(
        "argument 'index' of SetCurrentTTX is a signed 32-bit number (-2147483648 to 2147483647), not '1.5'",
        UsageError([] { Parse<int>("1.5"); }));
    EXPECT_EQ("argument 'index' of SetCurrentTTX is 1, true or on, or 0, false or off, not '2'",
              UsageError([] { Parse<bool>("2"); }));
    EXPECT_EQ("argument 'index' of SetCurrentTTX is EZVISDBTextType: CAPTION (0), SUPERIMPOSE (1) or another "
              "signed "
              "32-bit number, not 'subtitle'",
              UsageError([] { Parse<EZVISDBTextType>("subtitle"); }));
    EXPECT_EQ("option '--count' of pes is a number above 0, not '0'", UsageError([] {
                  ParseCount("0", {"pes", "--count"});
              }));
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
    EXPECT_EQ(ZV_AUDIO_ENCODE_AC3, Parse<EZVAudioEncodeType>("AC3"));
    EXPECT_EQ(ZV_AUDIO_ENCODE_AC3, Parse<EZVAudioEncodeType>("ac3"));
    EXPECT_EQ(ZV_AUDIO_ENCODE_AC3, Parse<EZVAudioEncodeType>("ZV_AUDIO_ENCODE_AC3"));
    EXPECT_EQ(ZV_AUDIO_ENCODE_AC3, Parse<EZVAudioEncodeType>("2"));
    EXPECT_EQ(77, Parse<EZVAudioEncodeType>("77"));
    EXPECT_EQ(PROGRAM_IPG_PREVIOUS, Parse<Program_IPG>("previous"));
    EXPECT_EQ(-1, Parse<Program_IPG>("-1"));
    EXPECT_EQ(ZV_PARENTAL_UNLOCKED_ALL, Parse<EZVParentalLock>("UNLOCKED_ALL"));
    EXPECT_EQ(CVTV_RESOLUTION_8K, Parse<cvtv_resolution_e>("8k"));
    EXPECT_TRUE(Refuses<Program_IPG>("2147483648"));
    EXPECT_TRUE(Refuses<Program_IPG>("ZV_NEXT"));
    EXPECT_TRUE(Refuses<Program_IPG>(""));
}

TEST(ArgumentsTest, Seconds)
{
    ArgumentPlace const seconds{"pes", "--seconds"};
    EXPECT_EQ(std::chrono::milliseconds(2500), ParseSeconds("2.5", seconds));
    EXPECT_EQ(std::chrono::milliseconds(1), ParseSeconds("0.001", seconds));
    for (char const* text : {"", "0", "-1", "nan", "inf", "1s", "1000001", "1e3", "0x10"}) {
        EXPECT_THAT(UsageError([&] { ParseSeconds(text, seconds); }),
                    testing::HasSubstr("a number of seconds"));
    }
}

} // namespace
