// SPDX-License-Identifier: MIT
#include <zviptv/client/Client.h>

#include <gtest/gtest.h>

using namespace zviptv;

namespace {

TEST(Result, HasAValueOrAFailure)
{
    Result<std::string> good(std::string("text"));
    ASSERT_TRUE(good);
    EXPECT_EQ(*good, "text");
    EXPECT_EQ(good->size(), 4U);
    EXPECT_EQ(good.ValueOr("other"), "text");
    std::string const moved = *std::move(good);
    EXPECT_EQ(moved, "text");
    Result<std::string> const bad(Failure{FailureKind::Refused, "GetAudio", "", "", "why"});
    ASSERT_FALSE(bad);
    EXPECT_EQ(bad.ValueOr("other"), "other");
    EXPECT_EQ(ToString(bad.GetFailure()), "GetAudio: refused: why");
    EXPECT_TRUE(Result<void>());
    EXPECT_FALSE(Result<void>(bad.GetFailure()));
}

TEST(ResultDeathTest, ReadingTheWrongSideEndsTheProcessWithAMessage)
{
    Result<int> const good(1);
    Result<int> const bad(Failure{FailureKind::TimedOut, "GetAudio", "", "", "no answer"});
    EXPECT_DEATH((void)*bad,
                 "the value of a failed call was read: GetAudio: timed out: no answer; test the Result");
    EXPECT_DEATH((void)good.GetFailure(), "the failure of a successful call was read");
    EXPECT_DEATH((void)Result<void>().GetFailure(), "the failure of a successful call was read");
}

TEST(Failures, HaveTheNamesOfTheFailureKinds)
{
    std::vector<std::string> words;
    for (int i = 0; i < 12; ++i) {
        words.emplace_back(ToString(static_cast<FailureKind>(i)));
    }
    EXPECT_EQ(words, (std::vector<std::string>{"no bus", "no service", "gone", "timed out", "bus error",
                                               "too large", "refused", "malformed reply", "invalid argument",
                                               "cancelled", "callback threw", "unknown"}));
}

TEST(Languages, AreThreeLetters)
{
    EXPECT_EQ(ToString(Language("ENG")), "eng");
    EXPECT_EQ(Language("eng").Number(), 0x656e67);
    EXPECT_EQ(ToString(Language()), "");
    EXPECT_FALSE(Language("en"));
    EXPECT_FALSE(Language("e1g"));
    EXPECT_EQ(ToString(Language::FromNumber(0x1a)), "0x1a");
    EXPECT_EQ(ToString(Language::FromNumber(-1)), "0xffffffff");
    EXPECT_TRUE(Language("deu") != Language("eng"));
}

TEST(PageLanguages, HaveTheNumbersOfTeletextPages)
{
    auto const page = [](SubtitleKind kind, std::uint8_t magazine, std::uint8_t number,
                         char const* language) {
        Subtitle subtitle;
        subtitle.kind = kind;
        subtitle.magazine = magazine;
        subtitle.page = number;
        subtitle.language = Language(language);
        return subtitle;
    };
    std::map<unsigned, std::string> const expected{{150, "fra"}, {888, "eng"}};
    EXPECT_EQ(
        PageLanguages({page(SubtitleKind::Teletext, 8, 0x88, "eng"), page(SubtitleKind::Dvb, 8, 0x89, "deu"),
                       page(SubtitleKind::Teletext, 1, 0x50, "fra"),
                       page(SubtitleKind::Teletext, 1, 0x5A, "ita")}),
        expected);
}

TEST(Enumerations, HaveTexts)
{
    EXPECT_EQ(ToString(SourceState::Playing), "playing");
    EXPECT_EQ(ToString(ParentalLock::UnlockedProgramme), "unlocked programme");
    EXPECT_EQ(ToString(ResolutionClass::Uhd8K), "8k");
    EXPECT_EQ(ToString(CaptionService::Service1), "1");
    EXPECT_EQ(ToString(static_cast<AudioCoding>(-17)), "unknown (-17)");
    EXPECT_EQ(ToString(IsdbText{Language("jpn"), IsdbTextKind::Caption, 0x105, 8, 0x30, 0}),
              "language=jpn type=caption pid=0x105 dataComponent=0x8 componentTag=0x30 languageTag=0");
}

} // namespace
