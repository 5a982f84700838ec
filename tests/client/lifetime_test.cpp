// SPDX-License-Identifier: MIT
#include "ClientTest.h"

#include "glib/Owned.h"

#include <zviptv/IPTVServiceAPI.h>

#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

TEST_F(TelevisionTest, DestroyingItEndsOutstandingCallsBeforeItReturns)
{
    m_service->AnswerNothing("MuteAudio");
    std::vector<Outcome<void>> outcomes(5);
    std::vector<Pending> calls;
    for (Outcome<void>& outcome : outcomes) {
        calls.push_back(player().MuteAudio(true, outcome.Take()));
    }
    ASSERT_TRUE(RunUntil([&] { return m_service->Requests().size() == 5; }));
    calls[4].Cancel();
    m_television.reset();
    for (std::size_t i = 0; i < 5; ++i) {
        ASSERT_EQ(outcomes[i].Count(), 1U);
        EXPECT_EQ(KindOf(*outcomes[i]), i < 4 ? "gone" : "cancelled");
    }
    RunPending();
    EXPECT_EQ(outcomes[0].Count(), 1U);
    calls[0].Cancel();
}

TEST_F(TelevisionTest, DestroyingItEndsCallsThatWaitForTheirChannel)
{
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take());
    m_television.reset();
    EXPECT_EQ(KindOf(*outcome), "gone");
    RunPending();
}

TEST_F(TelevisionTest, ACallFromACompletionOfADestructionIsDropped)
{
    m_service->AnswerNothing("MuteAudio");
    int completions = 0;
    Player& player = m_television->Player();
    std::function<void(Result<void>)> again = [&](Result<void> const&) {
        ++completions;
        player.MuteAudio(true, again);
    };
    player.MuteAudio(true, again);
    m_television.reset();
    RunPending();
    EXPECT_EQ(completions, 1);
}

TEST_F(TelevisionTest, ACompletionMayDestroyIt)
{
    Outcome<void> other;
    bool isDone = false;
    player().MuteAudio(true, [&](Result<void> const&) {
        m_television.reset();
        isDone = true;
    });
    m_service->AnswerNothing("MuteVideo");
    player().MuteVideo(true, other.Take());
    ASSERT_TRUE(RunUntil([&] { return isDone; }));
    EXPECT_EQ(KindOf(*other), "gone");
    RunPending();
}

TEST_F(TelevisionTest, AnAvailabilityListenerMayDestroyIt)
{
    int told = 0;
    Listener const first = m_television->OnAvailability([&](bool) {
        ++told;
        m_television.reset();
    });
    Listener const second = m_television->OnAvailability([&](bool) { ++told; });
    ASSERT_TRUE(RunUntil([&] { return m_television == nullptr; }));
    RunPending();
    EXPECT_EQ(told, 1) << "the second one is withdrawn";
}

TEST_F(TelevisionTest, AnErrorHandlerMayDestroyIt)
{
    m_television->OnError([&](Failure const&) { m_television.reset(); });
    player().MuteAudio(true, [](Result<void> const&) { throw std::runtime_error("out of a callback"); });
    ASSERT_TRUE(RunUntil([&] { return m_television == nullptr; }));
    RunPending();
}

TEST_F(TelevisionTest, TheLossOfTheServiceMayDestroyIt)
{
    ASSERT_TRUE(AwaitAvailable(true));
    m_service->AnswerNothing("MuteAudio");
    std::string kind;
    player().MuteAudio(true,
                       [&](Result<void> const& result) {
                           kind = KindOf(result);
                           m_television.reset();
                       },
                       {20s});
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("MuteAudio", 0ms).has_value(); }));
    KillService();
    ASSERT_TRUE(RunUntil([&] { return m_television == nullptr; }));
    EXPECT_EQ(kind, "no service");
    RunPending();
}

TEST_F(TelevisionTest, ListenersThatThrowAreReportedAndTheOthersRun)
{
    std::vector<Failure> reported;
    bool isReported = false;
    m_television->OnError([&](Failure const& failure) { reported.push_back(failure); });
    Listener const throwing =
        m_television->OnAvailability([](bool) { throw std::runtime_error("out of a listener"); });
    Listener const other = m_television->OnAvailability([&](bool) { isReported = true; });
    ASSERT_TRUE(RunUntil([&] { return isReported; }));
    ASSERT_EQ(reported.size(), 1U);
    EXPECT_EQ(reported[0].kind, FailureKind::CallbackThrew);
    EXPECT_EQ(reported[0].function, "OnAvailability");
}

TEST_F(TelevisionTest, AListenerMayOutliveIt)
{
    Listener listener = m_television->OnAvailability([](bool) {});
    m_television.reset();
    listener.Withdraw();
    Listener moved = std::move(listener);
}

TEST_F(ServiceClientTest, SeveralTelevisionsAndFactoryObjectsCoexist)
{
    // The objects use the process's shared connection, whose end with this bus would end later tests.
    Owned<GDBusConnection> const shared(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    ASSERT_NE(shared, nullptr);
    g_dbus_connection_set_exit_on_close(shared.get(), FALSE);
    IPlayerControl* object = nullptr;
    ASSERT_EQ(CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &object), 0);
    Television one;
    Television other;
    EXPECT_TRUE(object->MuteAudio(true));
    EXPECT_TRUE(Succeeded(one.Player().MuteAudio(true)));
    EXPECT_TRUE(Succeeded(other.Player().MuteAudio(true)));
    std::vector<std::string> senders;
    for (WireMessage const& request : m_service->Requests()) {
        senders.push_back(request.sender);
    }
    ASSERT_EQ(senders.size(), 3U);
    EXPECT_NE(senders[0], senders[1]);
    EXPECT_NE(senders[1], senders[2]);
    EXPECT_NE(senders[0], senders[2]);
    CIPTVServiceAPI::DestroyPlayerControl();
    EXPECT_TRUE(Succeeded(one.Player().MuteAudio(true)));
}

TEST_F(ServiceClientTest, ItsConnectionEndsWithIt)
{
    std::string name;
    {
        Television television;
        EXPECT_TRUE(Succeeded(television.Player().MuteAudio(true)));
        name = m_service->LastRequest().sender;
        EXPECT_THAT(m_service->Peer().ListNames(), testing::Contains(name));
    }
    EXPECT_TRUE(m_service->Peer().WaitForOwner(name, false));
}

TEST_F(ServiceClientTest, CallbacksRunInTheContextOfTheThreadThatCreatesIt)
{
    Owned<GMainContext> const context(g_main_context_new());
    g_main_context_push_thread_default(context.get());
    auto television = std::make_unique<Television>();
    g_main_context_pop_thread_default(context.get());
    Outcome<void> outcome;
    bool isAvailable = false;
    Listener const listener = television->OnAvailability([&](bool is) { isAvailable = is; });
    television->Player().MuteAudio(true, outcome.Take()); // its context is not this thread's default now
    while (!outcome.IsThere() || !isAvailable) {
        g_main_context_iteration(context.get(), TRUE);
    }
    EXPECT_TRUE(Succeeded(*outcome));
    television.reset();
    while (g_main_context_iteration(context.get(), FALSE) != FALSE) {
    }
}

TEST_F(TelevisionTest, AServiceThatLeavesDuringAnAnnouncementIsNoService)
{
    for (bool const isBlocking : {true, false}) {
        SCOPED_TRACE(isBlocking);
        m_service->AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
        std::thread leaving([&] {
            m_service->WaitForAnnouncement("PLAYERCONTROL", "y");
            m_service->Vanish();
        });
        Outcome<void> outcome;
        if (isBlocking) {
            outcome.Take()(player().MuteAudio(true));
        } else {
            player().MuteAudio(true, outcome.Take());
        }
        EXPECT_TRUE(outcome.Await());
        leaving.join();
        EXPECT_EQ(KindOf(*outcome), "no service");
        EXPECT_EQ(outcome->GetFailure().errorName, "");
        KillService();
        StartService();
    }
}

TEST_F(TelevisionTest, BlockingCallsMayBeMadeFromManyThreadsWhileTheServiceRestarts)
{
    std::atomic<bool> isOver{false};
    std::atomic<int> succeeded{0};
    std::mutex mutex;
    std::set<std::string> strange;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            while (!isOver) {
                Result<void> const result = player().MuteAudio(true);
                if (result) {
                    ++succeeded;
                } else if (result.GetFailure().kind != FailureKind::NoService) {
                    std::lock_guard<std::mutex> const lock(mutex);
                    strange.insert(ToString(result.GetFailure()));
                }
            }
        });
    }
    for (int i = 0; i < 5; ++i) {
        int const before = succeeded;
        EXPECT_TRUE(RunUntil([&] { return succeeded > before + 20 && m_television->IsAvailable(); }));
        KillService();
        EXPECT_TRUE(AwaitAvailable(false));
        StartService();
    }
    isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(strange, testing::IsEmpty());
}

} // namespace
