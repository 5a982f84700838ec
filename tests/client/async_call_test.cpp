// SPDX-License-Identifier: MIT
#include "ClientTest.h"

#include <future>
#include <numeric>
#include <stdexcept>

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

using Clock = std::chrono::steady_clock;

TEST_F(TelevisionTest, ABlockingCallNeedsNoLoop)
{
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    WireMessage const request = m_service->LastRequest();
    EXPECT_EQ(request.path, "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL");
    EXPECT_EQ(request.entries, Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}));
}

TEST_F(TelevisionTest, ACallThatDoesNotBlockConnectsAndRunsItsCompletionLater)
{
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take());
    EXPECT_FALSE(outcome.IsThere());
    ASSERT_TRUE(outcome.Await());
    EXPECT_TRUE(Succeeded(*outcome));
    EXPECT_EQ(m_service->LastRequest().entries,
              Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}}));
}

TEST_F(TelevisionTest, AnnouncesEachChannelOnce)
{
    Outcome<void> first;
    Outcome<void> second;
    player().MuteAudio(true, first.Take());
    player().MuteVideo(true, second.Take());
    ASSERT_TRUE(first.Await() && second.Await());
    EXPECT_TRUE(Succeeded(player().MuteAudio(false)));
    EXPECT_TRUE(Succeeded(m_television->Broadcast().UnMuteByRatingPin()));
    std::vector<WirePairs> announced;
    for (Announcement const& announcement : m_service->Announcements()) {
        announced.push_back(announcement.message.pairs);
    }
    std::string const name = m_service->ClientOf("PLAYERCONTROL");
    EXPECT_THAT(announced,
                testing::ElementsAre(Pairs({{"dbusname", name}, {"type", "PLAYERCONTROL"}, {"add", "y"}}),
                                     Pairs({{"dbusname", name}, {"type", "BROADCASTDATA"}, {"add", "y"}})));
}

TEST_F(TelevisionTest, AHundredCallsMayBeOutstanding)
{
    std::promise<void> allAreSent;
    std::shared_future<void> const released = allAreSent.get_future().share();
    m_service->AnswerBy("SetCurrentAudioByIndex", [released](WireMessage const&) {
        released.wait(); // the service does nothing else during this wait
        return Entries({{"result_internal", "1"}});
    });
    ASSERT_TRUE(Succeeded(player().MuteAudio(true))); // connects
    std::vector<int> done;
    for (int i = 0; i < 100; ++i) {
        player().SetCurrentAudioByIndex(i,
                                        [&done, i](Result<void> const& result) {
                                            EXPECT_TRUE(Succeeded(result));
                                            done.push_back(i);
                                        },
                                        {20s});
    }
    RunPending();
    EXPECT_TRUE(done.empty());
    allAreSent.set_value();
    ASSERT_TRUE(RunUntil([&] { return done.size() == 100; }));
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(done, expected);
}

TEST_F(TelevisionTest, ACancelledCallCompletesOnceAfterCancelReturns)
{
    m_service->AnswerNothing("MuteAudio");
    Outcome<void> outcome;
    Pending const call = player().MuteAudio(true, outcome.Take());
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("MuteAudio", 0ms).has_value(); }));
    call.Cancel();
    call.Cancel();
    EXPECT_FALSE(outcome.IsThere());
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "cancelled");
    EXPECT_EQ(outcome->GetFailure().function, "MuteAudio");
    call.Cancel();
    RunPending();
    EXPECT_EQ(outcome.Count(), 1U);
}

TEST_F(TelevisionTest, ACallThatWaitsForItsChannelIsCancelledUnsent)
{
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take()).Cancel();
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "cancelled");
    EXPECT_TRUE(Succeeded(player().MuteVideo(true)));
    EXPECT_EQ(m_service->Requests().size(), 1U) << "MuteVideo alone";
}

TEST_F(TelevisionTest, DroppingTheHandleCancelsNothing)
{
    Outcome<void> outcome;
    {
        Pending const dropped = player().MuteAudio(true, outcome.Take());
    }
    ASSERT_TRUE(outcome.Await());
    EXPECT_TRUE(Succeeded(*outcome));
}

TEST_F(TelevisionTest, EachCallHasItsTimeout)
{
    m_service->AnswerNothing("MuteAudio");
    Outcome<void> quick;
    Outcome<void> slow;
    auto const start = Clock::now();
    player().MuteAudio(true, slow.Take(), {20s});
    player().MuteAudio(true, quick.Take(), {50ms});
    ASSERT_TRUE(quick.Await());
    EXPECT_GE(Clock::now() - start, 50ms);
    EXPECT_EQ(KindOf(*quick), "timed out");
    EXPECT_THAT(quick->GetFailure().message, HasSubstr("within 50 ms"));
    EXPECT_FALSE(slow.IsThere());
}

TEST_F(TelevisionTest, AcceptsTheLongestTimeout)
{
    m_service->Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "1"}});
    Outcome<void> call;
    player().MuteAudio(true, call.Take(), {std::chrono::milliseconds::max()});
    Outcome<std::vector<AudioTrack>> list;
    m_television->Broadcast().AudioTracks(list.Take(), {std::chrono::milliseconds::max()});
    ASSERT_TRUE(call.Await() && list.Await());
    EXPECT_TRUE(Succeeded(*call));
    EXPECT_TRUE(Succeeded(*list));
}

TEST_F(TelevisionTest, ReleasesACompletionThatHasRun)
{
    m_service->Answer("SizeOfAudio", {{"result_internal", "1"}, {"size", "1"}});
    auto const kept = std::make_shared<int>();
    Outcome<std::vector<AudioTrack>> list;
    Pending const handle = m_television->Broadcast().AudioTracks(
        [kept, done = list.Take()](Result<std::vector<AudioTrack>> const& tracks) { done(tracks); });
    ASSERT_TRUE(list.Await());
    EXPECT_EQ(kept.use_count(), 1);
}

TEST_F(TelevisionTest, TheTimeoutCountsTheWaitForTheChannel)
{
    m_service->AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    Outcome<void> outcome;
    auto const start = Clock::now();
    player().MuteAudio(true, outcome.Take(), {50ms});
    ASSERT_TRUE(outcome.Await());
    EXPECT_LT(Clock::now() - start, 1900ms) << "sooner than the announcement";
    EXPECT_EQ(KindOf(*outcome), "timed out");
}

TEST_F(TelevisionTest, ATimeoutOfZeroSendsNothing)
{
    ASSERT_TRUE(Succeeded(player().MuteVideo(true)));
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take(), {0ms});
    EXPECT_FALSE(outcome.IsThere());
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "timed out");
    ASSERT_TRUE(Succeeded(player().MuteVideo(true)));
    EXPECT_EQ(m_service->Requests().size(), 2U);
}

TEST_F(TelevisionTest, ALateAnswerIsIgnored)
{
    m_service->AnswerWith("MuteAudio", WireAnswer(Entries({{"result_internal", "1"}})).After(100ms));
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take(), {10ms});
    ASSERT_TRUE(outcome.Await());
    Outcome<void> later;
    player().MuteAudio(true, later.Take(), {20s});
    ASSERT_TRUE(later.Await());
    EXPECT_TRUE(Succeeded(*later));
    EXPECT_EQ(outcome.Count(), 1U);
    EXPECT_EQ(KindOf(*outcome), "timed out");
}

TEST_F(TelevisionTest, ACompletionMayCallAgainAndBlock)
{
    Outcome<void> second;
    std::string blocking;
    player().MuteAudio(true, [&](Result<void> const&) {
        player().MuteAudio(false, second.Take());
        blocking = KindOf(player().MuteVideo(true));
    });
    ASSERT_TRUE(second.Await());
    EXPECT_TRUE(Succeeded(*second));
    EXPECT_EQ(blocking, "success");
}

TEST_F(TelevisionTest, AnExceptionOfACompletionIsReported)
{
    std::vector<Failure> reported;
    m_television->OnError([&](Failure const& failure) {
        reported.push_back(failure);
        throw std::runtime_error("ignored");
    });
    player().MuteAudio(true, [](Result<void> const&) { throw std::runtime_error("out of a callback"); });
    player().MuteVideo(true, [](Result<void> const&) { throw 7; });
    ASSERT_TRUE(RunUntil([&] { return reported.size() == 2; }));
    EXPECT_EQ(reported[0].kind, FailureKind::CallbackThrew);
    EXPECT_EQ(reported[0].function, "MuteAudio");
    EXPECT_THAT(reported[0].message, HasSubstr("out of a callback"));
    EXPECT_EQ(reported[1].function, "MuteVideo");
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
}

TEST_F(TelevisionTest, ANullCompletionIsAllowed)
{
    player().MuteAudio(true, nullptr);
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("MuteAudio", 0ms).has_value(); }));
    Outcome<void> outcome;
    player().MuteVideo(true, outcome.Take());
    EXPECT_TRUE(outcome.Await());
}

TEST_F(ServiceClientTest, UsesHandleAndApplicationOfTheOptions)
{
    Television::Options options;
    options.profile = 2;
    options.id = 44;
    options.applicationId = "org.example.app";
    Television blocking(options);
    EXPECT_TRUE(Succeeded(blocking.Player().MuteAudio(true)));
    auto const introduction = Entries({{"functionname", "SetAppID"}, {"AppID", "org.example.app"}});
    auto const mute = Entries({{"functionname", "MuteAudio"}, {"handleID", "556"}, {"onoff", "1"}});
    ASSERT_EQ(m_service->Requests().size(), 2U);
    EXPECT_EQ(m_service->Requests()[0].entries, introduction);
    EXPECT_EQ(m_service->Requests()[1].entries, mute);
    m_service->ClearRecords();
    Television async(options);
    Outcome<void> outcome;
    async.Player().MuteAudio(true, outcome.Take());
    ASSERT_TRUE(outcome.Await());
    ASSERT_EQ(m_service->Requests().size(), 2U);
    EXPECT_EQ(m_service->Requests()[0].entries, introduction);
    EXPECT_EQ(m_service->Requests()[1].entries, mute);
}

} // namespace
