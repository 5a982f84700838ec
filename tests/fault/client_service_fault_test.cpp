// SPDX-License-Identifier: MIT
#include "ClientFaultTest.h"

#include <array>
#include <future>
#include <thread>

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::Each;

namespace {

using Clock = std::chrono::steady_clock;
using Kinds = std::vector<std::string>;

TEST_F(ClientFault, F01_ServiceKilledWithCallsOutstanding)
{
    Television television;
    Repeat(ShortOrLong(5, 200), [&] {
        PeerProcess service({"service"});
        ASSERT_TRUE(AwaitAvailable(television, true));
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
        service.Stop();
        Kinds kinds;
        for (int i = 0; i < 20; ++i) {
            Mute(television, kinds);
        }
        RunPending();
        ASSERT_TRUE(kinds.empty());
        service.Kill();
        ASSERT_TRUE(RunUntil([&] { return kinds.size() == 20; }));
        ASSERT_THAT(kinds, Each("no service"));
        ASSERT_TRUE(AwaitAvailable(television, false));
        ASSERT_EQ(kinds.size(), 20U);
    });
}

TEST_F(ClientFault, F02_AvailabilityHandlerDestroysTheTelevision)
{
    Repeat(ShortOrLong(5, 200), [&] {
        PeerProcess service({"service"});
        auto television = std::make_unique<Television>();
        Listener const listener = television->OnAvailability([&](bool isAvailable) {
            if (!isAvailable) {
                television.reset();
            }
        });
        ASSERT_TRUE(AwaitAvailable(*television, true));
        StateWatcher const watcher(*television, {1ms, 1}, [](StateEvent const&) {});
        Subscription const subscription = television->SubscribePes({}, [](PesPacket const&) {});
        ASSERT_EQ(KindOf(television->Player().MuteAudio(true)), "success");
        service.Stop();
        Kinds kinds;
        for (int i = 0; i < 20; ++i) {
            Mute(*television, kinds);
        }
        service.Kill();
        ASSERT_TRUE(RunUntil([&] { return television == nullptr; }));
        ASSERT_EQ(kinds.size(), 20U) << "all complete before the destructor returns";
        ASSERT_FALSE(subscription.IsActive());
        RunPending();
        ASSERT_EQ(kinds.size(), 20U);
    });
}

TEST_F(ClientFault, F04_TelevisionsEndOnFourThreadsWhileTheServiceDies)
{
    int round = 0;
    std::array<Owned<GMainContext>, 4> contexts;
    for (Owned<GMainContext>& context : contexts) {
        context.reset(g_main_context_new());
    }
    Repeat(ShortOrLong(5, 500), [&] {
        ++round;
        PeerProcess service({"service"});
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (unsigned i = 0; i < contexts.size(); ++i) {
            threads.emplace_back([&, &context = contexts[i], lead = (round + static_cast<int>(i)) % 4] {
                g_main_context_push_thread_default(context.get());
                {
                    Kinds kinds;
                    bool isLost = false;
                    Television television;
                    Listener const listener =
                        television.OnAvailability([&](bool isAvailable) { isLost = !isAvailable; });
                    auto const end = Clock::now() + 20s;
                    while (!television.IsAvailable() && Clock::now() < end) {
                        g_main_context_iteration(context.get(), FALSE);
                    }
                    EXPECT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
                    Mute(television, kinds);
                    ++ready;
                    for (int turn = 0; turn < lead * 20 || (lead == 3 && !isLost && Clock::now() < end);
                         ++turn) {
                        g_main_context_iteration(context.get(), FALSE);
                        std::this_thread::yield();
                    }
                    EXPECT_TRUE(lead != 3 || isLost);
                }
                g_main_context_pop_thread_default(context.get());
            });
        }
        WaitUntil([&] { return ready == 4; }, patience);
        service.Kill();
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
}

TEST_F(ClientFault, F05_ServiceDiesDuringABlockingCall)
{
    Television television;
    Repeat(ShortOrLong(5, 200), [&] {
        PeerProcess service({"service"});
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
        service.Stop();
        auto const start = Clock::now();
        auto call =
            std::async(std::launch::async, [&] { return KindOf(television.Player().MuteAudio(true)); });
        std::this_thread::sleep_for(20ms); // killed before the call or during it: both have to end
        service.Kill();
        ASSERT_EQ(call.get(), "no service");
        ASSERT_LT(Clock::now() - start, 1900ms) << "it waited for its timeout";
    });
}

TEST_F(ClientFault, F06_ServiceStopped)
{
    PeerProcess service({"service"});
    Television television;
    ASSERT_TRUE(AwaitAvailable(television, true));
    Repeat(ShortOrLong(1, 40), [&] {
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
        service.Stop();
        Kinds kinds;
        Mute(television, kinds, 100ms);
        auto const start = Clock::now();
        ASSERT_TRUE(RunUntil([&] { return kinds.size() == 1; }));
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "timed out");
        ASSERT_GE(Clock::now() - start, 1900ms);
        service.Continue();
        ASSERT_EQ(KindOf(television.Player().MuteAudio(true)), "success");
        RunPending(); // the late replies are ignored
        ASSERT_EQ(kinds, Kinds{"timed out"});
        ASSERT_TRUE(television.IsAvailable());
    });
}

TEST_F(ClientFault, F12_ServiceRestartsWithAllInUse)
{
    Television television;
    int states = 0;
    StateWatcher const watcher(television, {10ms, 1}, [&](StateEvent const&) { ++states; });
    Subscription const packets = television.SubscribePes({}, [](PesPacket const&) {});
    Subscription const captions = television.SubscribeCaptions([](CaptionData const&) {});
    Repeat(ShortOrLong(10, 40), [&] {
        PeerProcess service({"service"});
        ASSERT_TRUE(AwaitAvailable(television, true));
        Kinds kinds;
        Mute(television, kinds);
        ASSERT_TRUE(RunUntil([&] { return kinds.size() == 1; }));
        ASSERT_EQ(kinds, Kinds{"success"});
        ASSERT_EQ(KindOf(television.Broadcast().UnMuteByRatingPin()), "success");
        ASSERT_EQ(KindOf(television.Guide().GetPresentProgram(1)).empty(), false);
        service.Kill();
        ASSERT_TRUE(AwaitAvailable(television, false));
        ASSERT_TRUE(packets.IsActive() && captions.IsActive());
    });
}

} // namespace
