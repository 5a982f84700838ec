// SPDX-License-Identifier: MIT
#include "ClientTest.h"

#include "glib/Owned.h"

#include <future>
#include <thread>
#include <utility>

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

using States = std::vector<bool>;

/// Records the availability that the television reports.
class RestartTest : public TelevisionTest
{
protected:
    States m_told;
    Listener m_listener =
        m_television->OnAvailability([this](bool isAvailable) { m_told.push_back(isAvailable); });
};

TEST_F(RestartTest, AvailabilityIsReportedWhenItChanges)
{
    EXPECT_FALSE(m_television->IsAvailable());
    ASSERT_TRUE(AwaitAvailable(true));
    KillService();
    ASSERT_TRUE(AwaitAvailable(false));
    StartService();
    ASSERT_TRUE(AwaitAvailable(true));
    EXPECT_EQ(m_told, (States{true, false, true}));
    m_listener.Withdraw();
    KillService();
    ASSERT_TRUE(AwaitAvailable(false));
    EXPECT_EQ(m_told.size(), 3U);
}

TEST_F(RestartTest, CallsWorkAgainAfterARestart)
{
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(AwaitAvailable(true));
        Outcome<void> outcome;
        player().MuteAudio(true, outcome.Take());
        ASSERT_TRUE(outcome.Await());
        EXPECT_TRUE(Succeeded(*outcome));
        EXPECT_TRUE(Succeeded(player().MuteVideo(true)));
        KillService();
        ASSERT_TRUE(AwaitAvailable(false));
        StartService();
    }
}

TEST_F(RestartTest, ABlockingCallNoticesARestartWithoutALoop)
{
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    for (int i = 0; i < 3; ++i) {
        KillService();
        EXPECT_EQ(KindOf(player().MuteAudio(true)), "no service");
        StartService();
        EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
        EXPECT_EQ(m_service->Requests().size(), 1U);
        EXPECT_EQ(m_service->Announcements().size(), 1U);
    }
}

TEST_F(RestartTest, ABlockingCallIsRepeatedIfItWasNotReceived)
{
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    KillService();
    StartService();
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    EXPECT_EQ(m_service->Requests().size(), 1U);
}

TEST_F(RestartTest, ABlockingCallIsNotRepeatedIfItWasReceived)
{
    EXPECT_TRUE(Succeeded(player().MuteVideo(true)));
    m_service->AnswerNothing("MuteAudio");
    auto const waiting = std::async(std::launch::async, [&] { return KindOf(player().MuteAudio(true)); });
    ASSERT_TRUE(m_service->WaitForRequest("MuteAudio"));
    m_service->Vanish();
    m_service.reset();
    StartService();
    waiting.wait();
    EXPECT_TRUE(m_service->Requests().empty());
}

TEST_F(RestartTest, OutstandingCallsFailWhenTheServiceLeaves)
{
    m_service->AnswerNothing("MuteAudio");
    std::vector<std::string> kinds;
    for (int i = 0; i < 10; ++i) {
        player().MuteAudio(true, [&](Result<void> const& result) { kinds.push_back(KindOf(result)); }, {20s});
    }
    ASSERT_TRUE(RunUntil([&] { return m_service->Requests().size() == 10; }));
    KillService();
    ASSERT_TRUE(RunUntil([&] { return kinds.size() == 10; }));
    EXPECT_THAT(kinds, testing::Each("no service"));
    EXPECT_FALSE(m_television->IsAvailable());
}

TEST_F(RestartTest, RequestsAnEndpointThatLeftAgain)
{
    auto endpoint = std::make_unique<WirePeer>(m_bus.Address());
    endpoint->SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}}); });
    m_service->SetPartnerName(endpoint->Name());
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    Outcome<void> lost;
    endpoint->SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    player().MuteAudio(true, lost.Take(), {20s});
    ASSERT_TRUE(RunUntil([&] { return endpoint->Received().All().size() >= 3; }));
    endpoint.reset();
    ASSERT_TRUE(lost.Await());
    EXPECT_EQ(KindOf(*lost), "no service");
    m_service->SetPartnerName(m_service->Name());
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take());
    ASSERT_TRUE(outcome.Await());
    EXPECT_TRUE(Succeeded(*outcome));
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
}

TEST_F(RestartTest, RequestsAnEndpointThatLeftUnnoticedAgain)
{
    auto endpoint = std::make_unique<WirePeer>(m_bus.Address());
    endpoint->SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}}); });
    m_service->SetPartnerName(endpoint->Name());
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    endpoint.reset();
    m_service->SetPartnerName(m_service->Name());
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take()); // the loop has not reported the loss
    ASSERT_TRUE(outcome.Await());
    EXPECT_TRUE(Succeeded(*outcome));
}

TEST_F(RestartTest, SurvivesARestartOfTheBus)
{
    ASSERT_TRUE(AwaitAvailable(true));
    Outcome<void> outstanding;
    m_service->AnswerNothing("MuteAudio");
    player().MuteAudio(true, outstanding.Take(), {20s});
    ASSERT_TRUE(RunUntil([&] { return m_service->WaitForRequest("MuteAudio", 0ms).has_value(); }));
    KillService();
    m_bus.Kill();
    ASSERT_TRUE(outstanding.Await());
    EXPECT_THAT(KindOf(*outstanding), testing::AnyOf("no bus", "no service"));
    ASSERT_TRUE(AwaitAvailable(false));
    EXPECT_EQ(KindOf(player().MuteAudio(true)), "no bus");
    m_bus.Restart();
    StartService();
    ASSERT_TRUE(AwaitAvailable(true));
    Outcome<void> outcome;
    player().MuteAudio(true, outcome.Take());
    ASSERT_TRUE(outcome.Await());
    EXPECT_TRUE(Succeeded(*outcome));
}

TEST_F(RestartTest, ABlockingCallNoticesARestartOfTheBusWithoutALoop)
{
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    KillService();
    m_bus.Restart();
    StartService();
    EXPECT_TRUE(Succeeded(player().MuteAudio(true)));
    ASSERT_TRUE(AwaitAvailable(true));
}

TEST_F(ServiceClientTest, NoticesTheEndOfAConnectionThatAnotherThreadMade)
{
    Owned<GMainContext> const context(g_main_context_new());
    g_main_context_push_thread_default(context.get());
    auto television = std::make_unique<Television>();
    g_main_context_pop_thread_default(context.get());
    auto const awaitAvailable = [&](bool isAvailable) {
        while (television->IsAvailable() != isAvailable) {
            g_main_context_iteration(context.get(), TRUE);
        }
    };
    std::thread([&] { EXPECT_TRUE(Succeeded(television->Player().MuteAudio(true))); }).join();
    awaitAvailable(true);
    KillService();
    awaitAvailable(false);
    StartService();
    awaitAvailable(true);
    m_bus.Kill();
    awaitAvailable(false);
    m_service.reset();
    m_bus.Restart();
    StartService();
    awaitAvailable(true);
    television.reset();
    while (g_main_context_iteration(context.get(), FALSE) != FALSE) {
    }
}

TEST_F(TelevisionTest, ReportsTheLatestAvailabilityLastIfAListenerIteratesTheContext)
{
    bool isFirst = true;
    States told;
    Listener const iterating = m_television->OnAvailability([&](bool) {
        if (std::exchange(isFirst, false)) {
            KillService();
            AwaitAvailable(false);
        }
    });
    Listener const other = m_television->OnAvailability([&](bool is) { told.push_back(is); });
    ASSERT_TRUE(RunUntil([&] { return !told.empty(); }));
    RunPending();
    EXPECT_FALSE(told.back());
}

TEST_F(ClientTest, AServiceMayComeLater)
{
    Television television;
    EXPECT_EQ(KindOf(television.Player().MuteAudio(true)), "no service");
    States told;
    Listener const listener =
        television.OnAvailability([&](bool isAvailable) { told.push_back(isAvailable); });
    FakeService service(m_bus.Address());
    ASSERT_TRUE(RunUntil([&] { return television.IsAvailable(); }));
    EXPECT_EQ(told, States{true});
    EXPECT_TRUE(Succeeded(television.Player().MuteAudio(true)));
}

TEST_F(ClientTest, ABusThatDoesNotAnswerBlocksNoAsynchronousCall)
{
    m_bus.Stop();
    auto const start = std::chrono::steady_clock::now();
    auto television = std::make_unique<Television>();
    Outcome<void> outcome;
    television->Player().MuteAudio(true, outcome.Take(), {100ms});
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1500ms);
    ASSERT_TRUE(outcome.Await());
    EXPECT_EQ(KindOf(*outcome), "timed out");
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
    Outcome<void> longer;
    television->Player().MuteAudio(true, longer.Take(), {20s});
    ASSERT_TRUE(longer.Await());
    EXPECT_EQ(KindOf(*longer), "no bus");
    auto const end = std::chrono::steady_clock::now();
    television.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - end, 1500ms);
    m_bus.Continue();
}

} // namespace
