// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "TwoPeersTest.h"

#include <atomic>
#include <stdexcept>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

class WirePeerFaultsTest : public TwoPeersTest
{
};

} // namespace

TEST_F(WirePeerFaultsTest, NoAnswerEndsAtTheTimeout)
{
    m_two.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    auto const start = std::chrono::steady_clock::now();
    auto const error = m_one.Call(Two(), {}, {100ms, false});
    EXPECT_GE(std::chrono::steady_clock::now() - start, 100ms);
    EXPECT_EQ(error.kind, WireKind::Error);
    EXPECT_EQ(error.errorName, "org.freedesktop.DBus.Error.NoReply");
}

TEST_F(WirePeerFaultsTest, ALateAnswerIsIgnored)
{
    m_two.SetHandler([](WireMessage const& call) {
        WireAnswer const answer(Entries({{"for", call.member}}));
        return call.member == "Late" ? answer.After(100ms) : answer;
    });
    EXPECT_EQ(m_one.Call(Two("Late"), {}, {20ms, false}).kind, WireKind::Error);
    m_two.SetHandler([](WireMessage const&) { return WireAnswer(Entries({{"for", "Next"}})).After(150ms); });
    EXPECT_EQ(m_one.Call(Two("Next")).Value("for"), "Next");
}

TEST_F(WirePeerFaultsTest, AVanishedPartnerEndsACallAtOnce)
{
    m_two.SetHandler([this](WireMessage const&) {
        m_two.Disconnect();
        return WireAnswer::Nothing();
    });
    auto const error = m_one.Call(Two());
    EXPECT_EQ(error.errorName, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_TRUE(m_one.WaitForOwner(m_two.Name(), false));
}

TEST_F(WirePeerFaultsTest, DisconnectVanishesTheNamesAndLeavesAUsableObject)
{
    ASSERT_TRUE(m_two.OwnName("org.corvel.name"));
    EXPECT_TRUE(m_one.WaitForOwner("org.corvel.name", true));
    auto const name = m_two.Name();
    m_two.Disconnect();
    EXPECT_TRUE(m_two.WaitDisconnected());
    EXPECT_FALSE(m_two.IsConnected());
    EXPECT_TRUE(m_one.WaitForOwner("org.corvel.name", false));
    EXPECT_TRUE(m_one.WaitForOwner(name, false));
    EXPECT_EQ(m_two.Name(), name);
    EXPECT_THROW(m_two.Emit({m_one.Name(), "/p", "a.b", "M"}), std::runtime_error);
    EXPECT_EQ(m_two.Call({m_one.Name(), "/p", "a.b", "M"}).errorName,
              "org.freedesktop.DBus.Error.Disconnected");
    m_two.Disconnect();
}

TEST_F(WirePeerFaultsTest, WaitForOwnerReportsThatNothingChanged)
{
    EXPECT_FALSE(m_one.WaitForOwner("org.corvel.never", true, 20ms));
    EXPECT_FALSE(m_one.WaitForOwner(m_two.Name(), false, 20ms));
}

TEST_F(WirePeerFaultsTest, WaitForOwnerNoticesALaterName)
{
    std::atomic<bool> came{false};
    std::thread waiting([&] { came = m_one.WaitForOwner("org.corvel.later", true); });
    EXPECT_TRUE(m_two.OwnName("org.corvel.later"));
    waiting.join();
    EXPECT_TRUE(came);
}

TEST_F(WirePeerFaultsTest, ADyingBusEndsOutstandingCalls)
{
    m_two.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    WireMessage error;
    std::thread waiting([&] { error = m_one.Call(Two()); });
    ASSERT_TRUE(m_two.WaitFor(IsCall("Send")));
    m_bus.Kill();
    waiting.join();
    EXPECT_EQ(error.errorName, "org.freedesktop.DBus.Error.Disconnected");
    EXPECT_TRUE(m_one.WaitDisconnected());
    EXPECT_TRUE(m_two.WaitDisconnected());
    EXPECT_THROW(m_one.Sync(), std::runtime_error);
}

TEST_F(WirePeerFaultsTest, AHandlerCannotWaitOnItsOwnConnection)
{
    m_two.SetHandler([this](WireMessage const&) -> WireAnswer {
        m_two.Sync();
        return WireBody();
    });
    EXPECT_EQ(m_one.Call(Two()).errorName, "org.corvel.zviptvapi.test.HandlerFailed");
}

TEST_F(WirePeerFaultsTest, TheFormerHandlerDoesNotRunAfterSetHandler)
{
    std::atomic<bool> replaced{false};
    std::atomic<int> late{0};
    m_two.SetHandler([&](WireMessage const&) {
        late += replaced ? 1 : 0;
        return WireAnswer(WireBody());
    });
    std::atomic<bool> stop{false};
    std::thread caller([&] {
        while (!stop) {
            m_one.Call(Two());
        }
    });
    ASSERT_TRUE(m_two.Received().WaitForCount(IsCall("Send"), 20));
    m_two.SetHandler([](WireMessage const&) { return WireAnswer(WireBody()); });
    replaced = true;
    auto const seen = m_two.Received().Count(IsCall("Send"));
    EXPECT_TRUE(m_two.Received().WaitForCount(IsCall("Send"), seen + 20));
    stop = true;
    caller.join();
    EXPECT_EQ(late, 0);
}

TEST_F(WirePeerFaultsTest, AHandlerMayReplaceItself)
{
    m_two.SetHandler([this](WireMessage const&) {
        m_two.SetHandler([](WireMessage const&) { return Entries({{"handler", "2"}}); });
        return Entries({{"handler", "1"}});
    });
    EXPECT_EQ(m_one.Call(Two()).Value("handler"), "1");
    EXPECT_EQ(m_one.Call(Two()).Value("handler"), "2");
}

TEST_F(WirePeerFaultsTest, APeerMayEndDuringAFlood)
{
    for (int round = 0; round < 20; ++round) {
        auto target = std::make_unique<WirePeer>();
        m_one.EmitMany({target->Name(), "/p", "a.b", "Flood"}, Entries({{"k", "v"}}), 200);
        ASSERT_TRUE(target->WaitFor(IsSignal("Flood")));
        target.reset();
    }
    EXPECT_NO_THROW(m_one.Sync());
}

TEST_F(WirePeerFaultsTest, AnOversizedMessageDisconnectsItsSender)
{
    BusOptions options;
    options.setEnvironment = false;
    options.extraConfig = R"(<limit name="max_message_size">65536</limit>)";
    PrivateBus const small(options);
    WirePeer sender(small.Address());
    WirePeer receiver(small.Address());
    sender.Emit({receiver.Name(), "/p", "a.b", "M"}, Entries({{"k", PatternBytes(100000)}}));
    EXPECT_TRUE(sender.WaitDisconnected());
    EXPECT_TRUE(receiver.WaitForOwner(sender.Name(), false));
}
