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
    EXPECT_EQ(WireKind::Reply, reply.kind);
    EXPECT_EQ(m_two.Name(), reply.sender);
    EXPECT_EQ(Entries({{"result_internal", "1"}, {"k", "v"}}), reply.entries);

    auto const call = m_two.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_EQ(call->serial, reply.replySerial);
    WireMessage expected;
    expected.kind = WireKind::Call;
    expected.sender = m_one.Name();
    expected.destination = m_two.Name();
    expected.path = "/org/corvel/object";
    expected.interface = "org.corvel.interface";
    expected.member = "Send";
    expected.signature = "a{sv}";
    expected.entries = body;
    EXPECT_EQ(expected, *call);
}

TEST_F(WirePeerTest, PairsGoBothWays)
{
    m_two.SetHandler([](WireMessage const&) { return Pairs({{"dbusname", ":1.42"}}); });
    auto const body = Pairs({{"dbusname", m_one.Name()}, {"type", "IPGUTIL"}, {"add", "y"}});
    EXPECT_EQ(Pairs({{"dbusname", ":1.42"}}), m_one.Call(Two(), body).pairs);
    EXPECT_EQ(body, m_two.WaitFor(IsCall("Send"))->pairs);
}

TEST_F(WirePeerTest, ErrorsAndRawBodiesAsAnswers)
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
    EXPECT_EQ(WireKind::Error, error.kind);
    EXPECT_EQ("org.corvel.Failed", error.errorName);
    EXPECT_EQ(std::vector<std::string>{"because"}, error.strings);
    EXPECT_EQ("i", m_one.Call(Two()).signature);
}

TEST_F(WirePeerTest, WithoutHandlerACallIsAnUnknownMethodButRecorded)
{
    EXPECT_EQ("org.freedesktop.DBus.Error.UnknownMethod", m_one.Call(Two()).errorName);
    EXPECT_TRUE(m_two.WaitFor(IsCall("Send")));
}

TEST_F(WirePeerTest, AThrowingHandlerAnswersWithItsText)
{
    m_two.SetHandler([](WireMessage const&) -> WireAnswer { throw std::runtime_error("no \xff"); });
    auto const error = m_one.Call(Two());
    EXPECT_EQ("org.corvel.zviptvapi.test.HandlerFailed", error.errorName);
    EXPECT_EQ(std::vector<std::string>{R"("no \xff")"}, error.strings);
    m_two.SetHandler([](WireMessage const&) -> WireAnswer { throw 5; });
    EXPECT_EQ("org.corvel.zviptvapi.test.HandlerFailed", m_one.Call(Two()).errorName);
}

TEST_F(WirePeerTest, DelayedAnswersDoNotHoldUpOthers)
{
    m_two.SetHandler([](WireMessage const& call) {
        WireAnswer const answer(Entries({{"for", call.member}}));
        return call.member == "Slow" ? answer.After(100ms) : answer;
    });
    auto const start = std::chrono::steady_clock::now();
    WireMessage slow;
    std::thread waiting([&] { slow = m_one.Call(Two("Slow")); });
    ASSERT_TRUE(m_two.WaitFor(IsCall("Slow")));
    EXPECT_EQ("Quick", m_one.Call(Two("Quick")).Value("for"));
    waiting.join();
    EXPECT_EQ("Slow", slow.Value("for"));
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
    EXPECT_EQ(WireKind::Reply, m_one.Call(Two("Short")).kind);
    m_two.Disconnect();
    waiting.join();
    EXPECT_EQ("org.freedesktop.DBus.Error.NoReply", longest.errorName);
}

TEST_F(WirePeerTest, UnicastAndBroadcastSignals)
{
    WireTarget const unicast{m_two.Name(), "/p", "org.corvel.interface", "SendSignal"};
    m_one.Emit(unicast, Entries({{"functionname", "PESCB"}}));
    auto const received = m_two.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(received);
    EXPECT_EQ(m_two.Name(), received->destination);
    EXPECT_EQ("PESCB", received->Value("functionname"));

    m_two.AddMatch("type='signal',interface='org.corvel.interface',member='ToAll'");
    m_one.Emit({"", "/p", "org.corvel.interface", "ToAll"});
    EXPECT_TRUE(m_two.WaitFor(IsSignal("ToAll")));
    m_two.RemoveMatch("type='signal',interface='org.corvel.interface',member='ToAll'");
    m_one.Emit({"", "/p", "org.corvel.interface", "ToAll"});
    m_one.Emit(unicast);
    EXPECT_TRUE(m_two.Received().WaitForCount(IsSignal("SendSignal"), 2));
    EXPECT_EQ(1U, m_two.Received().Count(IsSignal("ToAll")));
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
    EXPECT_EQ(0U, m_two.Received().Count(IsSignal("Unseen")));
}

TEST_F(WirePeerTest, AMebibyteGoesThereAndBackUnchanged)
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
    EXPECT_EQ("", m_one.GetNameOwner("org.corvel.name"));
    EXPECT_TRUE(m_two.OwnName("org.corvel.name"));
    EXPECT_FALSE(m_one.OwnName("org.corvel.name"));
    EXPECT_EQ(m_two.Name(), m_one.GetNameOwner("org.corvel.name"));
    auto const names = m_one.ListNames();
    for (auto const& name : {std::string("org.corvel.name"), m_one.Name(), m_two.Name()}) {
        EXPECT_EQ(1, std::count(names.begin(), names.end(), name)) << name;
    }
    EXPECT_FALSE(m_one.ReleaseName("org.corvel.name"));
    EXPECT_TRUE(m_two.ReleaseName("org.corvel.name"));
    EXPECT_EQ("", m_one.GetNameOwner("org.corvel.name"));
}

TEST_F(WirePeerTest, FlagsOfACallAreSeen)
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

TEST_F(WirePeerTest, InvalidNamesAreRefusedHereNotByAnAbort)
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
    EXPECT_EQ(200, right);
}
