// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "TwoPeersTest.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

class WirePeerTest : public TwoPeersTest
{
};

} // namespace

TEST_F(WirePeerTest, CallArrivesAsSentAndTheReplyComesBack)
{
    m_two.SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}, {"k", "v"}}); });
    auto const body = Entries({{"functionname", "MuteAudio"}, {"handleID", "256"}, {"onoff", "1"}});
    auto const reply = m_one.Call(Two(), body);
    EXPECT_EQ(reply.kind, WireKind::Reply);
    EXPECT_EQ(reply.sender, m_two.Name());
    EXPECT_EQ(reply.entries, Entries({{"result_internal", "1"}, {"k", "v"}}));

    auto const call = m_two.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_EQ(reply.replySerial, call->serial);
    WireMessage expected;
    expected.kind = WireKind::Call;
    expected.sender = m_one.Name();
    expected.destination = m_two.Name();
    expected.path = "/org/corvel/object";
    expected.interface = "org.corvel.interface";
    expected.member = "Send";
    expected.signature = "a{sv}";
    expected.entries = body;
    EXPECT_EQ(*call, expected);
}

TEST_F(WirePeerTest, SendsAndReceivesPairs)
{
    m_two.SetHandler([](WireMessage const&) { return Pairs({{"dbusname", ":1.42"}}); });
    auto const body = Pairs({{"dbusname", m_one.Name()}, {"type", "IPGUTIL"}, {"add", "y"}});
    EXPECT_EQ(m_one.Call(Two(), body).pairs, Pairs({{"dbusname", ":1.42"}}));
    EXPECT_EQ(m_two.WaitFor(IsCall("Send"))->pairs, body);
}

TEST_F(WirePeerTest, AnswersWithErrorsAndRawBodies)
{
    m_two.SetHandler([](WireMessage const& call) {
        if (call.member == "Fail") {
            return WireAnswer::Error("org.corvel.Failed", "because");
        }
        return WireAnswer::Raw([](DBusMessageIter* iter) {
            std::int32_t const number = 42;
            dbus_message_iter_append_basic(iter, 'i', &number);
        });
    });
    auto const error = m_one.Call(Two("Fail"));
    EXPECT_EQ(error.kind, WireKind::Error);
    EXPECT_EQ(error.errorName, "org.corvel.Failed");
    EXPECT_EQ(error.strings, std::vector<std::string>{"because"});
    EXPECT_EQ(m_one.Call(Two()).signature, "i");
}

TEST_F(WirePeerTest, WithoutHandlerACallIsAnUnknownMethodButRecorded)
{
    EXPECT_EQ(m_one.Call(Two()).errorName, "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_TRUE(m_two.WaitFor(IsCall("Send")));
}

TEST_F(WirePeerTest, AThrowingHandlerAnswersWithItsText)
{
    m_two.SetHandler([](WireMessage const&) -> WireAnswer { throw std::runtime_error("no \xff"); });
    auto const error = m_one.Call(Two());
    EXPECT_EQ(error.errorName, "org.corvel.zviptvapi.test.HandlerFailed");
    EXPECT_EQ(error.strings, std::vector<std::string>{R"("no \xff")"});
    m_two.SetHandler([](WireMessage const&) -> WireAnswer { throw 5; });
    EXPECT_EQ(m_one.Call(Two()).errorName, "org.corvel.zviptvapi.test.HandlerFailed");
}

TEST_F(WirePeerTest, DelayedAnswersDoNotDelayOthers)
{
    m_two.SetHandler([](WireMessage const& call) {
        WireAnswer const answer(Entries({{"for", call.member}}));
        return call.member == "Slow" ? answer.After(100ms) : answer;
    });
    auto const start = std::chrono::steady_clock::now();
    WireMessage slow;
    std::thread waiting([&] { slow = m_one.Call(Two("Slow")); });
    ASSERT_TRUE(m_two.WaitFor(IsCall("Slow")));
    EXPECT_EQ(m_one.Call(Two("Quick")).Value("for"), "Quick");
    waiting.join();
    EXPECT_EQ(slow.Value("for"), "Slow");
    EXPECT_GE(std::chrono::steady_clock::now() - start, 100ms);
}

TEST_F(WirePeerTest, AShortDelayEndsBeforeALongOneThatBeganEarlier)
{
    m_two.SetHandler([](WireMessage const& call) {
        return WireAnswer(WireBody()).After(call.member == "Long" ? 1h : 10ms);
    });
    WireMessage longest;
    std::thread waiting([&] { longest = m_one.Call(Two("Long"), {}, {1h, false}); });
    ASSERT_TRUE(m_two.WaitFor(IsCall("Long")));
    EXPECT_EQ(m_one.Call(Two("Short")).kind, WireKind::Reply);
    m_two.Disconnect();
    waiting.join();
    EXPECT_EQ(longest.errorName, "org.freedesktop.DBus.Error.NoReply");
}

TEST_F(WirePeerTest, UnicastAndBroadcastSignals)
{
    WireTarget const unicast{m_two.Name(), "/p", "org.corvel.interface", "SendSignal"};
    m_one.Emit(unicast, Entries({{"functionname", "PESCB"}}));
    auto const received = m_two.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(received);
    EXPECT_EQ(received->destination, m_two.Name());
    EXPECT_EQ(received->Value("functionname"), "PESCB");

    m_two.AddMatch("type='signal',interface='org.corvel.interface',member='ToAll'");
    m_one.Emit({"", "/p", "org.corvel.interface", "ToAll"});
    EXPECT_TRUE(m_two.WaitFor(IsSignal("ToAll")));
    m_two.RemoveMatch("type='signal',interface='org.corvel.interface',member='ToAll'");
    m_one.Emit({"", "/p", "org.corvel.interface", "ToAll"});
    m_one.Emit(unicast);
    EXPECT_TRUE(m_two.Received().WaitForCount(IsSignal("SendSignal"), 2));
    EXPECT_EQ(m_two.Received().Count(IsSignal("ToAll")), 1U);
}

TEST_F(WirePeerTest, ManySignalsArriveCompleteAndInOrder)
{
    constexpr std::size_t count = 2000;
    m_one.EmitMany({m_two.Name(), "/p", "org.corvel.interface", "Tick"}, Entries({{"k", "v"}}), count);
    ASSERT_TRUE(m_two.Received().WaitForCount(IsSignal("Tick"), count));
    std::uint32_t last = 0;
    for (auto const& message : m_two.Received().All()) {
        if (message.member != "Tick") {
            continue;
        }
        EXPECT_GT(message.serial, last);
        last = message.serial;
    }
}

TEST_F(WirePeerTest, RecordingCanBeSwitchedOff)
{
    m_two.SetRecording(false);
    m_one.Emit({m_two.Name(), "/p", "org.corvel.interface", "Unseen"});
    m_one.Call({m_two.Name(), "/", "org.freedesktop.DBus.Peer", "Ping"});
    m_two.SetRecording(true);
    m_one.Emit({m_two.Name(), "/p", "org.corvel.interface", "Seen"});
    ASSERT_TRUE(m_two.WaitFor(IsSignal("Seen")));
    EXPECT_EQ(m_two.Received().Count(IsSignal("Unseen")), 0U);
}

TEST_F(WirePeerTest, AMebibyteReturnsUnchanged)
{
    auto const blob = PatternBytes(1024 * 1024);
    m_two.SetHandler([](WireMessage const& call) { return Entries({{"echo", call.Value("data")}}); });
    auto const reply = m_one.Call(Two(), Entries({{"data", blob}}));
    EXPECT_TRUE(reply.Value("echo") == blob) << "size " << reply.Value("echo").size();
}

TEST_F(WirePeerTest, AMessageJustBelowTheDaemonsLimitIsDelivered)
{
    auto const blob = PatternBytes(31U * 1024 * 1024);
    m_one.Emit({m_two.Name(), "/p", "a.b", "Large"}, Entries({{"data", blob}}));
    auto const received = m_two.WaitFor(IsSignal("Large"));
    ASSERT_TRUE(received);
    EXPECT_TRUE(received->Value("data") == blob) << "size " << received->Value("data").size();
}

TEST_F(WirePeerTest, NamesAreOwnedListedAndReleased)
{
    EXPECT_EQ(m_one.GetNameOwner("org.corvel.name"), "");
    EXPECT_TRUE(m_two.OwnName("org.corvel.name"));
    EXPECT_FALSE(m_one.OwnName("org.corvel.name"));
    EXPECT_EQ(m_one.GetNameOwner("org.corvel.name"), m_two.Name());
    auto const names = m_one.ListNames();
    for (auto const& name : {std::string("org.corvel.name"), m_one.Name(), m_two.Name()}) {
        EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
    }
    EXPECT_FALSE(m_one.ReleaseName("org.corvel.name"));
    EXPECT_TRUE(m_two.ReleaseName("org.corvel.name"));
    EXPECT_EQ(m_one.GetNameOwner("org.corvel.name"), "");
}

TEST_F(WirePeerTest, ReportsTheFlagsOfACall)
{
    m_one.CallWithoutReply(Two("Quiet"));
    auto const quiet = m_two.WaitFor(IsCall("Quiet"));
    ASSERT_TRUE(quiet);
    EXPECT_TRUE(quiet->noReply);
    EXPECT_FALSE(quiet->noAutoStart);
    m_one.Call(Two("NoStart"), {}, {patience, true});
    EXPECT_TRUE(m_two.WaitFor(IsCall("NoStart"))->noAutoStart);
    EXPECT_FALSE(m_two.WaitFor(IsCall("NoStart"))->noReply);
}

TEST_F(WirePeerTest, RefusesInvalidNamesWithoutAnAbort)
{
    EXPECT_THROW(m_one.Call({"nodot", "/p", "a.b", "M"}), std::invalid_argument);
    EXPECT_THROW(m_one.Call({m_two.Name(), "p", "a.b", "M"}), std::invalid_argument);
    EXPECT_THROW(m_one.Call({m_two.Name(), "/p", "a", "M"}), std::invalid_argument);
    EXPECT_THROW(m_one.Emit({m_two.Name(), "/p", "", "M"}), std::invalid_argument);
    EXPECT_THROW(m_one.Emit({m_two.Name(), "/p", "a.b", ""}), std::invalid_argument);
}

TEST_F(WirePeerTest, ManyThreadsMayCallAtOnce)
{
    m_two.SetHandler([](WireMessage const& call) { return call.entries; });
    std::vector<std::thread> threads;
    std::atomic<int> right{0};
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 50; ++i) {
                auto const body = Entries({{"n", std::to_string(thread * 1000 + i)}});
                right += m_one.Call(Two(), body).entries == body ? 1 : 0;
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(right, 200);
}
