// SPDX-License-Identifier: MIT
#include "ClientTest.h"

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string AudioBytes(std::string const& language)
{
    return std::string(language.rbegin(), language.rend()) + std::string(29, '\0');
}

std::string const film =
    R"({"service_id":"7","event_id":4,"start_time":1774733400,"duration":10800,"title":"Cellar Door"})";
std::string const nextFilm =
    R"({"service_id":"7","event_id":5,"start_time":1774744200,"duration":1800,"title":"Night Trains"})";

/// A service with two audio tracks and a guide, and the events of a watcher.
class StateWatcherTest : public TelevisionTest
{
protected:
    StateWatcherTest() { SetUpAnswers(*m_service); }

    static void SetUpAnswers(FakeService& service)
    {
        for (char const* const list : {"SizeOfHybridSBT", "SizeOfTTX", "SizeOfISDBText"}) {
            service.Answer(list, {{"result_internal", "1"}, {"size", "0"}});
        }
        for (char const* const selected : {"GetCurrentHybridSBT", "GetCurrentTTX", "GetCurrentISDBText"}) {
            service.Answer(selected, {{"result_internal", "0"}});
        }
        service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "2"}});
        service.Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "2"}});
        service.AnswerBy("GetAudio", [](WireMessage const& request) {
            return WireAnswer(
                Entries({{"result_internal", "1"},
                         {"audio", AudioBytes(request.Value("index") == "0" ? "eng" : "deu")}}));
        });
        SelectAudio(service, "0");
        Lock(service, "0");
        service.Answer("FlagServiceLocked", {{"result_internal", "1"}, {"outServiceLocked", "0"}});
        service.Answer("GetPresentProgram", {{"data", film}});
    }
    static void SelectAudio(FakeService& service, std::string const& index)
    {
        service.Answer("GetCurrentAudioInfo",
                       {{"result_internal", "1"}, {"landCode", "6647399"}, {"index", index}});
    }
    static void Lock(FakeService& service, std::string const& lock)
    {
        service.Answer("GetRatingLockState", {{"result_internal", "1"}, {"lockState", lock}});
    }

    void Watch(StateOptions options = {5ms, 7})
    {
        m_watcher = std::make_unique<StateWatcher>(*m_television, options,
                                                   [this](StateEvent const& event) { OnEvent(event); });
    }
    void OnEvent(StateEvent const& event)
    {
        m_events.push_back(event);
        m_texts.push_back(ToString(event));
        if (m_action) {
            m_action();
        }
    }
    bool AwaitEvents(std::size_t count)
    {
        return RunUntil([&] { return m_events.size() >= count; });
    }
    std::size_t Count(std::string const& function) const
    {
        std::size_t count = 0;
        for (WireMessage const& request : m_service->Requests()) {
            count += request.Value("functionname") == function ? 1U : 0U;
        }
        return count;
    }
    /// Runs until this many further rounds have ended.
    bool AwaitRounds(std::size_t rounds)
    {
        std::size_t const before = Count("GetSourceState");
        return RunUntil([&] { return Count("GetSourceState") > before + rounds; });
    }

    std::vector<StateEvent> m_events;
    std::vector<std::string> m_texts;
    std::function<void()> m_action;
    std::unique_ptr<StateWatcher> m_watcher;
};

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

TEST_F(StateWatcherTest, NothingIsReportedWithoutAChange)
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
    m_service->Answer("GetPresentProgram", {{"data", nextFilm}});
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

TEST_F(StateWatcherTest, WithoutAServiceIdNoProgrammeIsAskedFor)
{
    Watch({5ms, std::nullopt});
    ASSERT_TRUE(AwaitEvents(1));
    EXPECT_EQ(Count("GetPresentProgram"), 0U);
    EXPECT_FALSE(m_watcher->State().present);
}

TEST_F(StateWatcherTest, TwoRoundsNeverOverlap)
{
    std::vector<std::chrono::steady_clock::time_point> asked; // filled by the service's thread alone
    m_service->AnswerBy("GetSourceState", [&](WireMessage const&) {
        asked.push_back(std::chrono::steady_clock::now());
        return WireAnswer(Entries({{"result_internal", "1"}, {"sourcestate", "2"}})).After(60ms);
    });
    Watch({1ms, std::nullopt});
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 4; }));
    m_service.reset();
    for (std::size_t i = 1; i < asked.size(); ++i) {
        EXPECT_GE(asked[i] - asked[i - 1], 60ms);
    }
}

TEST_F(StateWatcherTest, RoundsStartAtTheIntervalOrWhenRefreshed)
{
    auto const start = std::chrono::steady_clock::now();
    Watch({300ms, std::nullopt});
    ASSERT_TRUE(AwaitEvents(1));
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 2; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 300ms);
    m_watcher.reset();
    m_events.clear();
    Watch({10min, std::nullopt});
    ASSERT_TRUE(AwaitEvents(1));
    SelectAudio(*m_service, "1");
    m_watcher->Refresh();
    ASSERT_TRUE(AwaitEvents(2));
    EXPECT_EQ(m_texts.back(), "audio track: 0 -> 1");
}

TEST_F(StateWatcherTest, ARefreshDuringARoundIsFollowedByAnother)
{
    Watch({10min, std::nullopt});
    m_service->AnswerBy("GetSourceState", [](WireMessage const&) {
        return WireAnswer(Entries({{"result_internal", "1"}, {"sourcestate", "2"}})).After(50ms);
    });
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 1; }));
    m_watcher->Refresh();
    m_watcher->Refresh();
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 2; }));
    EXPECT_EQ(m_events.size(), 1U);
}

TEST_F(StateWatcherTest, AfterARestartOnlyChangesAreReported)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    for (int i = 0; i < 3; ++i) {
        KillService();
        ASSERT_TRUE(AwaitAvailable(false));
        StartService([i](FakeService& service) {
            SetUpAnswers(service);
            SelectAudio(service, i % 2 == 0 ? "1" : "0");
        });
        ASSERT_TRUE(AwaitEvents(2 + static_cast<std::size_t>(i)));
    }
    m_texts.erase(m_texts.begin());
    EXPECT_THAT(m_texts, ElementsAre("audio track: 0 -> 1", "audio track: 1 -> 0", "audio track: 0 -> 1"));
}

TEST_F(StateWatcherTest, AServiceThatComesLaterIsReportedWhole)
{
    KillService();
    Watch({10min, 7});
    ASSERT_FALSE(RunUntil([&] { return !m_events.empty(); }, 100ms));
    StartService(SetUpAnswers);
    ASSERT_TRUE(AwaitEvents(1));
    EXPECT_TRUE(std::holds_alternative<TelevisionState>(m_events[0]));
}

TEST_F(StateWatcherTest, AFailingQuestionKeepsItsValueAndIsReportedOnce)
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

TEST_F(StateWatcherTest, ARefusedQuestionHasNoValue)
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

TEST_F(StateWatcherTest, AListThatChangesMeanwhileIsTakenFromTheNextRound)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    m_service->Answer("GetAudio", {{"result_internal", "0"}});
    ASSERT_TRUE(AwaitRounds(3));
    EXPECT_EQ(m_events.size(), 1U);
    EXPECT_EQ(m_watcher->State().audioTracks.size(), 2U);
}

TEST_F(StateWatcherTest, NoEventFollowsTheEndOfTheWatcher)
{
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    m_service->Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "3"}});
    SelectAudio(*m_service, "1");
    Lock(*m_service, "1");
    m_action = [this] { m_watcher.reset(); };
    m_watcher->Refresh();
    ASSERT_TRUE(AwaitEvents(2));
    std::size_t const asked = Count("GetSourceState");
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 2; }, 100ms));
    EXPECT_LE(Count("GetSourceState"), asked);
}

TEST_F(StateWatcherTest, AWatcherMayEndWhileItsQuestionsAreOutstanding)
{
    m_service->AnswerNothing("GetSourceState");
    Watch();
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") == 1; }));
    m_watcher.reset();
    EXPECT_FALSE(RunUntil([&] { return !m_events.empty(); }, 100ms));
}

TEST_F(StateWatcherTest, TheTelevisionMayEndFirst)
{
    Watch();
    m_action = [this] { m_television.reset(); };
    ASSERT_TRUE(AwaitEvents(1));
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 1; }, 50ms));
    EXPECT_EQ(m_watcher->State().audio, 0);
    m_watcher->Refresh();
    RunPending();

    m_television = std::make_unique<Television>();
    m_action = nullptr;
    m_service->AnswerNothing("GetSourceState");
    Watch();
    std::size_t const before = Count("GetSourceState");
    ASSERT_TRUE(RunUntil([&] { return Count("GetSourceState") > before; }));
    m_television.reset();
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 1; }, 50ms));
}

TEST_F(StateWatcherTest, ExceptionsOfTheCallbackAreReported)
{
    std::vector<Failure> failures;
    m_television->OnError([&](Failure const& failure) { failures.push_back(failure); });
    m_action = [] { throw std::runtime_error("too bad"); };
    Watch();
    ASSERT_TRUE(AwaitEvents(1));
    SelectAudio(*m_service, "1");
    ASSERT_TRUE(AwaitEvents(2));
    ASSERT_EQ(failures.size(), 2U);
    EXPECT_EQ(failures[1].kind, FailureKind::CallbackThrew);
    EXPECT_EQ(failures[1].function, "StateWatcher");
    EXPECT_THAT(failures[1].message, HasSubstr("too bad"));
}

TEST_F(StateWatcherTest, AWatcherMayMove)
{
    Watch();
    StateWatcher moved(std::move(*m_watcher));
    m_watcher.reset();
    ASSERT_TRUE(AwaitEvents(1));
    StateWatcher other(*m_television, {}, nullptr);
    moved = std::move(other);
    EXPECT_TRUE(StateWatcher().State() == TelevisionState());
    StateWatcher().Refresh();
    EXPECT_FALSE(RunUntil([&] { return m_events.size() > 1; }, 50ms));
}

} // namespace
