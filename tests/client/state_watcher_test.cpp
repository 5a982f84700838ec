// SPDX-License-Identifier: MIT
#include "StateWatcherTest.h"

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

TEST_F(StateWatcherTest, TheFirstEventIsTheWholeState)
{
    Watch();
    EXPECT_TRUE(m_events.empty());
    EXPECT_TRUE(m_watcher->State() == TelevisionState());
    ASSERT_TRUE(AwaitEvents(1));
    auto const* const state = std::get_if<TelevisionState>(&m_events[0]);
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(state->source, SourceState::Playing);
    ASSERT_EQ(state->audioTracks.size(), 2U);
    EXPECT_EQ(ToString(state->audioTracks[1].language), "deu");
    EXPECT_EQ(state->audio, 0);
    EXPECT_EQ(state->subtitle, std::nullopt);
    EXPECT_EQ(state->programmeLock, false);
    EXPECT_EQ(state->serviceLock, false);
    ASSERT_TRUE(state->present);
    EXPECT_EQ(state->present->title, "Cellar Door");
    EXPECT_TRUE(m_watcher->State() == *state);
    EXPECT_EQ(m_texts[0],
              "source: playing; audio tracks: [eng, deu]; subtitles: []; teletext pages: []; captions: []; "
              "superimposes: []; audio track: 0; subtitle: none; teletext page: none; caption: none; "
              "superimpose: none; programme lock: not locked; service lock: not locked; programme: "
              "2026-03-28 21:30:00 UTC, 180 min: Cellar Door");
}

TEST_F(StateWatcherTest, ReportsNothingWithoutAChange)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    ASSERT_TRUE(AwaitRounds(5));
    EXPECT_EQ(m_events.size(), 1U);
}

TEST_F(StateWatcherTest, EachChangeIsAnEventWithTheOldAndTheNewValue)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    SelectAudio(*m_service, "1");
    ASSERT_TRUE(AwaitEvents(2));
    auto const* const audio = std::get_if<AudioChange>(&m_events[1]);
    ASSERT_NE(audio, nullptr);
    EXPECT_EQ(audio->before, 0);
    EXPECT_EQ(audio->after, 1);
    Lock(*m_service, "1");
    ASSERT_TRUE(AwaitEvents(3));
    m_service->Answer("GetPresentProgram", {{"data", NextFilm}});
    ASSERT_TRUE(AwaitEvents(4));
    m_service->Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "3"}});
    ASSERT_TRUE(AwaitEvents(5));
    m_service->Answer("FlagServiceLocked", {{"result_internal", "1"}, {"outServiceLocked", "1"}});
    ASSERT_TRUE(AwaitEvents(6));
    m_texts.erase(m_texts.begin());
    EXPECT_THAT(m_texts, ElementsAre("audio track: 0 -> 1", "programme lock: not locked -> locked",
                                     "programme: 2026-03-28 21:30:00 UTC, 180 min: Cellar Door -> "
                                     "2026-03-29 00:30:00 UTC, 30 min: Night Trains",
                                     "source: playing -> ended", "service lock: not locked -> locked"));
    EXPECT_EQ(m_watcher->State().audio, 1);
}

TEST_F(StateWatcherTest, ListsAndTheirSelectionsAreReported)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    m_service->Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "1"}});
    ASSERT_TRUE(AwaitEvents(2));
    m_service->Answer("GetHybridSBT", {{"result_internal", "1"}, {"landCode", "0"}, {"hybridSbt", "gne"}});
    m_service->Answer("SizeOfHybridSBT", {{"result_internal", "1"}, {"size", "1"}});
    ASSERT_TRUE(AwaitEvents(3));
    m_service->Answer("GetTTX", {{"result_internal", "1"}, {"ttx", "ued"}});
    m_service->Answer("SizeOfTTX", {{"result_internal", "1"}, {"size", "1"}});
    ASSERT_TRUE(AwaitEvents(4));
    m_service->Answer("GetISDBText", {{"result_internal", "1"}, {"isdbText", "npj"}});
    m_service->AnswerBy("SizeOfISDBText", [](WireMessage const& request) {
        return WireAnswer(Entries({{"result_internal", "1"}, {"size", request.Value("mode")}}));
    });
    ASSERT_TRUE(AwaitEvents(5));
    std::size_t number = 0;
    for (char const* const selected : {"GetCurrentHybridSBT", "GetCurrentTTX"}) {
        m_service->Answer(selected, {{"result_internal", "1"}, {"landCode", "0"}, {"index", "0"}});
        ASSERT_TRUE(AwaitEvents(6 + number++));
    }
    m_service->AnswerBy("GetCurrentISDBText", [](WireMessage const& request) {
        return WireAnswer(
            Entries({{"result_internal", request.Value("mode")}, {"landCode", "0"}, {"index", "0"}}));
    });
    ASSERT_TRUE(AwaitEvents(8));
    m_texts.erase(m_texts.begin());
    EXPECT_THAT(m_texts,
                ElementsAre("audio tracks: [eng, deu] -> [eng]", "subtitles: [] -> [eng]",
                            "teletext pages: [] -> [deu]", "superimposes: [] -> [jpn]", "subtitle: none -> 0",
                            "teletext page: none -> 0", "superimpose: none -> 0"));
}

TEST_F(StateWatcherTest, RequestsNoProgrammeWithoutAServiceId)
{
    Watch({5ms, std::nullopt});
    ASSERT_TRUE(AwaitEvents(1));
    EXPECT_EQ(Count("GetPresentProgram"), 0U);
    EXPECT_FALSE(m_watcher->State().present);
}

TEST_F(StateWatcherTest, AFailedRequestKeepsItsValueAndIsReportedOnce)
{
    std::vector<Failure> failures;
    m_television->OnError([&](Failure const& failure) { failures.push_back(failure); });
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    m_service->AnswerError("GetCurrentAudioInfo");
    m_service->Answer("GetRatingLockState", {{"result_internal", "1"}, {"lockState", "junk"}});
    ASSERT_TRUE(AwaitRounds(4));
    EXPECT_EQ(m_events.size(), 1U);
    ASSERT_EQ(failures.size(), 2U);
    EXPECT_EQ(failures[0].function, "GetCurrentAudioInfo");
    EXPECT_EQ(failures[0].kind, FailureKind::BusError);
    EXPECT_EQ(failures[1].function, "GetRatingLockState");
    EXPECT_EQ(failures[1].kind, FailureKind::MalformedReply);
    SelectAudio(*m_service, "1");
    ASSERT_TRUE(AwaitEvents(2));
    m_service->AnswerError("GetCurrentAudioInfo");
    ASSERT_TRUE(RunUntil([&] { return failures.size() == 3; }));
    EXPECT_EQ(m_watcher->State().audio, 1);
}

TEST_F(StateWatcherTest, ARefusedRequestHasNoValue)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    m_service->Answer("GetCurrentAudioInfo", {{"result_internal", "0"}});
    ASSERT_TRUE(AwaitEvents(2));
    m_service->Answer("SizeOfAudio", {{"result_internal", "0"}});
    ASSERT_TRUE(AwaitEvents(3));
    m_service->Answer("GetRatingLockState", {{"result_internal", "0"}});
    ASSERT_TRUE(AwaitEvents(4));
    m_texts.erase(m_texts.begin());
    EXPECT_THAT(m_texts, ElementsAre("audio track: 0 -> none", "audio tracks: [eng, deu] -> []",
                                     "programme lock: not locked -> none"));
}

TEST_F(StateWatcherTest, TakesAListThatChangesFromTheNextRound)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    m_service->Answer("GetAudio", {{"result_internal", "0"}});
    ASSERT_TRUE(AwaitRounds(3));
    EXPECT_EQ(m_events.size(), 1U);
    EXPECT_EQ(m_watcher->State().audioTracks.size(), 2U);
}

} // namespace
