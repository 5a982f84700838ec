// SPDX-License-Identifier: MIT
#include "FunctionRow.h"

using namespace zviptv;
using namespace zviptv::test;

namespace {

// Every field has another value. Numbers are little endian.
std::string const
    AudioBytes("gne\0\x02\0\0\0\x01\x01\x30\x03\x80\xbb\0\0\0\x77\x01\0\x02\x01\x0f\0\0\0\0\0\0\0\0\0", 32);
AudioTrack const Audio{Language("eng"), AudioCoding::Ac3, 0x101, 0x30, 3, 48000, 96000, 2, 1, 0x0f};
std::string const PageBytes("ued\0\x04\x01\x08\x88\x02\x09\0\0\0\0\0\0", 16);
TeletextPage const Page{Language("deu"), 0x104, 8, 0x88, 2, 9};
std::string const SubtitleBytes("arf\0\x01\0\0\0\x03\x01\x01\x02\x03\x04\x10\x01\x07\x77\x2a\0\0\0\0\0", 24);
Subtitle const BroadcastSubtitle{
    Language("fra"), SubtitleKind::Dvb, 0x103, 0x201, 0x403, 0x10, 1, 7, 0x77, 0x2a};
std::string const TextBytes("npj\0\x01\0\0\0\x05\x01\x12\0\x38\x02\0\0", 16);
IsdbText const Text{Language("jpn"), IsdbTextKind::Superimpose, 0x105, 0x12, 0x38, 2};

TEST_F(FunctionTest, RecordsOfTheBroadcast)
{
    Check(Row(Request("GetAudio", {{"index", "4294967295"}}), Reply({{"audio", AudioBytes}}), Audio,
              [](auto& tv, auto... more) { return tv.Broadcast().GetAudio(4294967295U, more...); }));
    Check(Row(Request("GetTTX", {{"index", "1"}}), Reply({{"ttx", PageBytes}}), Page,
              [](auto& tv, auto... more) { return tv.Broadcast().GetTTX(1, more...); }));
    Check(Row(Request("GetPreferredTTXSubtitle"), Reply({{"ttxSubtitle", PageBytes}}), Page,
              [](auto& tv, auto... more) { return tv.Broadcast().GetPreferredTTXSubtitle(more...); }));
    Check(Row(Request("GetHybridSBT", {{"index", "0"}}),
              Reply({{"landCode", "6713953"}, {"hybridSbt", SubtitleBytes}}),
              HybridSBTAnswer{Language("fra"), BroadcastSubtitle},
              [](auto& tv, auto... more) { return tv.Broadcast().GetHybridSBT(0, more...); }));
    Check(Row(Request("GetPreferredHybridSBT"), Reply({{"landCode", "0"}, {"hybridSbt", SubtitleBytes}}),
              PreferredHybridSBTAnswer{Language(), BroadcastSubtitle},
              [](auto& tv, auto... more) { return tv.Broadcast().GetPreferredHybridSBT(more...); }));
    Check(Row(Request("GetISDBText", {{"mode", "1"}, {"index", "2"}}), Reply({{"isdbText", TextBytes}}), Text,
              [](auto& tv, auto... more) {
                  return tv.Broadcast().GetISDBText(IsdbTextKind::Superimpose, 2, more...);
              }));
    Check(Row(Request("GetDigitalDualSound"),
              Reply({{"currentMode", std::string("\x01\0\0\0\x01\0\0\0", 8)},
                     {"nextMode", std::string("\x02\0\0\0\0\0\0\0", 8)}}),
              DigitalDualSoundAnswer{{MultiSound::Main, 1}, {MultiSound::Sub, 0}},
              [](auto& tv, auto... more) { return tv.Broadcast().GetDigitalDualSound(more...); }));
    Check(Row(Request("GetRatingInfo"),
              Reply({{"ratingInfoSize", "2"}, {"ratingInfo", std::string("\0\0\x10\x01\x02\x03", 6)}}),
              std::vector<RatingLevel>{{0, 0, 16}, {1, 2, 3}},
              [](auto& tv, auto... more) { return tv.Broadcast().GetRatingInfo(more...); }));
    Check(Row(Request("GetRatingInfo"), Reply({{"ratingInfoSize", "0"}}), std::vector<RatingLevel>{},
              [](auto& tv, auto... more) { return tv.Broadcast().GetRatingInfo(more...); }));
}

TEST_F(FunctionTest, SelectionsOfTheBroadcast)
{
    Check(Row(Request("GetAudioFormat"), Reply({{"encodeType", "5"}}), AudioCoding::Latm,
              [](auto& tv, auto... more) { return tv.Broadcast().GetAudioFormat(more...); }));
    Check(Row(Request("GetCurrentAudioInfo"), Reply({{"landCode", "6647399"}, {"index", "1"}}),
              CurrentAudioInfoAnswer{Language("eng"), 1},
              [](auto& tv, auto... more) { return tv.Broadcast().GetCurrentAudioInfo(more...); }));
    Check(Row(Request("GetCurrentTTX"), Reply({{"landCode", "6579573"}, {"index", "2"}}),
              CurrentTTXAnswer{Language("deu"), 2},
              [](auto& tv, auto... more) { return tv.Broadcast().GetCurrentTTX(more...); }));
    Check(Row(Request("GetCurrentHybridSBT"), Reply({{"landCode", "6579573"}, {"index", "0"}}),
              CurrentHybridSBTAnswer{Language("deu"), 0},
              [](auto& tv, auto... more) { return tv.Broadcast().GetCurrentHybridSBT(more...); }));
    Check(Row(Request("GetCurrentISDBText", {{"mode", "0"}}),
              Reply({{"landCode", "6975598"}, {"index", "3"}}), CurrentISDBTextAnswer{Language("jpn"), 3},
              [](auto& tv, auto... more) {
                  return tv.Broadcast().GetCurrentISDBText(IsdbTextKind::Caption, more...);
              }));
    Check(Row(Request("GetCaptionLanguage", {{"service", "2"}}),
              Reply({{"landCode", "7040882"}, {"koreanCode", "1"}}),
              CaptionLanguageAnswer{Language("kor"), '1'}, [](auto& tv, auto... more) {
                  return tv.Broadcast().GetCaptionLanguage(CaptionService::Service2, more...);
              }));
    Check(Row(Request("CheckHardOfHearingSBT"), Reply({{"exists", "1"}}), true,
              [](auto& tv, auto... more) { return tv.Broadcast().CheckHardOfHearingSBT(more...); }));
}

TEST_F(FunctionTest, SizesAndLocksOfTheBroadcast)
{
    Check(Row(Request("SizeOfAudio"), Reply({{"size", "2147483647"}}), 2147483647,
              [](auto& tv, auto... more) { return tv.Broadcast().SizeOfAudio(more...); }));
    Check(Row(Request("SizeOfTTX"), Reply({{"size", "3"}}), 3,
              [](auto& tv, auto... more) { return tv.Broadcast().SizeOfTTX(more...); }));
    Check(Row(Request("SizeOfHybridSBT"), Reply({{"size", "0"}}), 0,
              [](auto& tv, auto... more) { return tv.Broadcast().SizeOfHybridSBT(more...); }));
    Check(Row(Request("SizeOfISDBText", {{"mode", "1"}}), Reply({{"size", "1"}}), 1,
              [](auto& tv, auto... more) {
                  return tv.Broadcast().SizeOfISDBText(IsdbTextKind::Superimpose, more...);
              }));
    Check(Row(Request("SetUnlockedInfo", {{"ratingInfo", "3"}}), [](auto& tv, auto... more) {
        return tv.Broadcast().SetUnlockedInfo(ParentalLock::UnlockedAll, more...);
    }));
    Check(Row(Request("GetRatingLockState"), Reply({{"lockState", "2"}}), true,
              [](auto& tv, auto... more) { return tv.Broadcast().GetRatingLockState(more...); }));
    Check(Row(Request("UnMuteByRatingPin"),
              [](auto& tv, auto... more) { return tv.Broadcast().UnMuteByRatingPin(more...); }));
    Check(Row(Request("SetUnlockedInfoWhenFactoryMode", {{"lockState", "1"}}), [](auto& tv, auto... more) {
        return tv.Broadcast().SetUnlockedInfoWhenFactoryMode(true, more...);
    }));
    Check(Row(Request("FlagServiceLocked"), Reply({{"outServiceLocked", "0"}}), false,
              [](auto& tv, auto... more) { return tv.Broadcast().FlagServiceLocked(more...); }));
}

/// UndefinedBehaviorSanitizer reports a deadline that overflows.
TEST_F(FunctionTest, ListsWithTheShortestAndTheLongestTime)
{
    m_service->Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "0"}});
    Outcome<std::vector<AudioTrack>> shortest;
    m_television->Broadcast().AudioTracks(shortest.Take(), {std::chrono::milliseconds::min()});
    Outcome<std::vector<AudioTrack>> longest;
    m_television->Broadcast().AudioTracks(longest.Take(), {std::chrono::milliseconds::max()});
    ASSERT_TRUE(shortest.Await() && longest.Await());
    EXPECT_EQ(KindOf(*shortest), "timed out");
    EXPECT_EQ(KindOf(*longest), "success");
}

TEST_F(FunctionTest, ListsAskForTheSizeAndThenForEachElement)
{
    m_service->Answer("SizeOfHybridSBT", {{"result_internal", "1"}, {"size", "2"}});
    m_service->AnswerBy("GetHybridSBT", [](WireMessage const& request) {
        std::string bytes = SubtitleBytes;
        bytes[8] = request.Value("index").front(); // the PID
        return Entries({{"result_internal", "1"}, {"landCode", "0"}, {"hybridSbt", bytes}});
    });
    Subtitle first = BroadcastSubtitle;
    Subtitle second = BroadcastSubtitle;
    first.pid = 0x130;
    second.pid = 0x131;
    auto const blocking = m_television->Broadcast().Subtitles();
    ASSERT_TRUE(Succeeded(blocking));
    EXPECT_TRUE(*blocking == (std::vector<Subtitle>{first, second}));
    Outcome<std::vector<Subtitle>> outcome;
    m_television->Broadcast().Subtitles(outcome.Take());
    ASSERT_TRUE(outcome.Await());
    ASSERT_TRUE(Succeeded(*outcome));
    EXPECT_TRUE(**outcome == (std::vector<Subtitle>{first, second}));
    EXPECT_EQ(m_service->Requests().size(), 6U);
}

TEST_F(FunctionTest, AListFailsWithTheFirstRequestThatFails)
{
    m_service->Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "2"}});
    m_service->AnswerBy("GetAudio", [](WireMessage const& request) {
        return Entries(
            {{"result_internal", request.Value("index") == "0" ? "1" : "0"}, {"audio", AudioBytes}});
    });
    EXPECT_EQ(KindOf(m_television->Broadcast().AudioTracks()), "refused");
    Outcome<std::vector<AudioTrack>> outcome;
    m_television->Broadcast().AudioTracks(outcome.Take());
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "refused");
    EXPECT_EQ(outcome->GetFailure().function, "GetAudio");
    m_service->Answer("SizeOfTTX", {{"result_internal", "1"}, {"size", "-1"}});
    EXPECT_EQ(KindOf(m_television->Broadcast().TeletextPages()), "malformed reply");
    m_service->Answer("SizeOfTTX", {{"result_internal", "1"}, {"size", "2147483647"}});
    EXPECT_EQ(KindOf(m_television->Broadcast().TeletextPages()), "malformed reply");
    EXPECT_FALSE(m_service->WaitForRequest("GetTTX", std::chrono::milliseconds(0)));
    m_service->Answer("SizeOfISDBText", {{"result_internal", "1"}, {"size", "0"}});
    auto const none = m_television->Broadcast().IsdbTexts(IsdbTextKind::Caption);
    ASSERT_TRUE(Succeeded(none));
    EXPECT_TRUE(none->empty());
}

TEST_F(FunctionTest, CancellingAListEndsIt)
{
    m_service->Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "3"}});
    m_service->AnswerNothing("GetAudio");
    Outcome<std::vector<AudioTrack>> outcome;
    Pending const list = m_television->Broadcast().AudioTracks(outcome.Take());
    ASSERT_TRUE(RunUntil(
        [&] { return m_service->WaitForRequest("GetAudio", std::chrono::milliseconds(0)).has_value(); }));
    list.Cancel();
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "cancelled");
    EXPECT_EQ(outcome.Count(), 1U);
}

} // namespace
