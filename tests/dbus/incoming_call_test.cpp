// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "ChannelFixture.h"

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

class IncomingCall : public LoopedChannelTest, public testing::WithParamInterface<char const*>
{
protected:
    WireMessage Call(WireBody const& body = WireEntries())
    {
        return m_partner.Call(m_channel.Target(GetParam()), body);
    }

    TestChannel m_channel{"BROADCASTDATA"};
};

INSTANTIATE_TEST_SUITE_P(Channel, IncomingCall, testing::Values("Send", "SendSignal"),
                         [](auto const& parameter) { return std::string(parameter.param); });

TEST_P(IncomingCall, WithoutHandlerTheAnswerIsEmpty)
{
    m_channel->SetCallback(nullptr, nullptr, nullptr);
    WireMessage const reply = Call(Entries({{"k", "v"}}));
    EXPECT_EQ(reply.kind, WireKind::Reply);
    EXPECT_EQ(reply.sender, m_channel->GetPublicName());
    EXPECT_EQ(reply.signature, "a{sv}");
    EXPECT_EQ(reply.entries, WireEntries());
}

TEST_P(IncomingCall, AnswersWithTheMessageOfTheHandler)
{
    std::string const record("\0\1\0\2\0\3\0\0", 8);
    m_channel.onMessage = [&](CMessageBuffer&) {
        return Message({{"z", "1"}, {"e", ""}, {"z", "2"}, {"r", record}});
    };
    WireMessage const reply = Call();
    EXPECT_EQ(reply.signature, "a{sv}");
    EXPECT_EQ(reply.entries, Entries({{"z", "1"}, {"e", ""}, {"z", "2"}, {"r", record}}));
    EXPECT_TRUE(reply.HasOnlyByteArrays());
}

TEST_P(IncomingCall, PassesTheRequestToTheHandler)
{
    WireEntries request;
    m_channel.onMessage = [&](CMessageBuffer& message) {
        request = EntriesOf(message);
        return CMessageBuffer();
    };
    std::string const record("\0\1\0\2\0\3\0\0", 8);
    Call(Entries({{"z", "1"}, {"e", ""}, {"z", "2"}, {"r", record}}));
    EXPECT_EQ(request, Entries({{"z", "1"}, {"z", "2"}, {"r", record}}));
    Call(WireBody::Variants({TextVariant("s", "text"), BytesVariant("k", "v"), NumberVariant("n", 5)}));
    EXPECT_EQ(request, Entries({{"k", "v"}}));
    Call(WireEntries());
    EXPECT_EQ(request, WireEntries());
}

TEST_P(IncomingCall, IsLogged)
{
    std::string const name = m_channel->GetPublicName();
    m_log.Clear();
    Call();
    std::string const path = "/org/corvel/zviptvapi/DbusCommunication/BROADCASTDATA";
    EXPECT_THAT(
        LoggedLines(m_log),
        ElementsAre(Info("m_MethodCallback",
                         "m_MethodCallback sender=" + m_partner.Name() + " obj_path=" + path +
                             " iface_name=org.corvel.zviptvapi.DbusCommunication method_name=" + GetParam()),
                    Info("m_MethodCallback", "m_object_name: " + path)));
}

TEST_P(IncomingCall, AnswersEverybodyBeforeAndAfterConnect)
{
    WirePeer stranger;
    m_channel.onMessage = [](CMessageBuffer&) {
        return Message({{"to", CProxyDBusHelper::GetSenderName()}});
    };
    EXPECT_EQ(stranger.Call(m_channel.Target(GetParam()), WireEntries()).Value("to"), stranger.Name());
    ASSERT_EQ(m_channel->Connect(m_partner.Name()), 1);
    EXPECT_EQ(stranger.Call(m_channel.Target(GetParam()), WireEntries()).Value("to"), stranger.Name());
    EXPECT_EQ(Call().Value("to"), m_partner.Name());
    EXPECT_EQ(CProxyDBusHelper::GetSenderName(), "");
    std::string outside = "?";
    m_loop.Run([&] { outside = CProxyDBusHelper::GetSenderName(); });
    EXPECT_EQ(outside, "");
}

TEST_P(IncomingCall, SendsNoReplyIfNoneIsExpected)
{
    BusMonitor monitor(m_bus.Address());
    int calls = 0;
    m_channel.onMessage = [&](CMessageBuffer&) { return Message({{"n", std::to_string(++calls)}}); };
    std::uint32_t const serial = m_partner.CallWithoutReply(m_channel.Target(GetParam()), WireEntries());
    EXPECT_EQ(Call().Value("n"), "2") << "the first was handled as well";
    ASSERT_TRUE(monitor.WaitFor([](WireMessage const& seen) { return seen.Value("n") == "2"; }));
    auto const answersIt = [&](WireMessage const& seen) {
        return seen.replySerial == serial && seen.destination == m_partner.Name();
    };
    EXPECT_EQ(monitor.Seen().Count(answersIt), 0U);
}

TEST_P(IncomingCall, RefusesArgumentsOfAnotherType)
{
    int calls = 0;
    m_channel.onMessage = [&](CMessageBuffer&) {
        ++calls;
        return CMessageBuffer();
    };
    for (WireBody const& body : {WireBody(), WireBody::Strings({"a"}), WireBody(Pairs({{"a", "b"}}))}) {
        EXPECT_EQ(Call(body).errorName, "org.freedesktop.DBus.Error.InvalidArgs");
    }
    EXPECT_EQ(calls, 0);
}

TEST_P(IncomingCall, AnAnswerThatCannotBeSentIsAnError)
{
    m_channel.onMessage = [](CMessageBuffer& request) {
        return request.Size() == 0 ? Message({{"\xff", "1"}}) : Message({{"k", "v"}});
    };
    EXPECT_EQ(Call().kind, WireKind::Error);
    EXPECT_EQ(Call(Entries({{"a", "b"}})).Value("k"), "v");
}

using UnknownCall = LoopedChannelTest;

TEST_F(UnknownCall, IsRefusedByTheBusLibrary)
{
    TestChannel channel;
    int calls = 0;
    channel.onMessage = [&](CMessageBuffer&) {
        ++calls;
        return CMessageBuffer();
    };
    EXPECT_EQ(m_partner.Call(channel.Target("Sent"), WireEntries()).errorName,
              "org.freedesktop.DBus.Error.UnknownMethod");
    WireTarget target = channel.Target("Send");
    target.interface = "org.corvel.zviptvapi.Other";
    EXPECT_EQ(m_partner.Call(target, WireEntries()).kind, WireKind::Error);
    EXPECT_EQ(calls, 0);
}

struct Seen
{
    int messages = 0;
    int notifications = 0;
};

TEST_F(LoopedChannelTest, BothHandlersReceiveTheLatestUserData)
{
    CProxyDBusHelper channel("IPGUTIL");
    Seen first;
    Seen second;
    auto const onMessage = [](CMessageBuffer&, void* data) {
        ++static_cast<Seen*>(data)->messages;
        return CMessageBuffer();
    };
    auto const onNotification = [](CMessageBuffer&, void* data) {
        ++static_cast<Seen*>(data)->notifications;
    };
    channel.SetCallback(onMessage, onNotification, &first);
    channel.SetCallback(onMessage, onNotification, &second);
    ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
    WireTarget target{channel.GetPublicName(), std::string(ChannelObject) + "IPGUTIL", ChannelInterface,
                      "SendSignal"};
    m_partner.Emit(target, WireEntries());
    target.member = "Send";
    EXPECT_EQ(m_partner.Call(target, WireEntries()).kind, WireKind::Reply);
    EXPECT_EQ(second.messages, 1);
    EXPECT_EQ(second.notifications, 1) << "the signal came before the call";
    EXPECT_EQ(first.messages + first.notifications, 0);
}

} // namespace
