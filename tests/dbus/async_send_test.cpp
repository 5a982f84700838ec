// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

class AsyncSend : public ChannelTest
{
protected:
    AsyncSend() { ConnectAndSettle(m_channel); }

    int Send(CMessageBuffer request, int async = 1)
    {
        return m_channel->SendMessage(request, m_reply, async);
    }

    TestChannel m_channel{"IPGUTIL"};
    CMessageBuffer m_reply = Message({{"old", "1"}});
    WireEntries const m_untouched = Entries({{"old", "1"}});
};

TEST_F(AsyncSend, CallsSendLikeTheSynchronousOne)
{
    std::string const record("\0\1\0\2\0\3\0\0", 8);
    EXPECT_EQ(Send(Message({{"functionname", "MuteAudio"}, {"e", ""}, {"r", record}, {"e", "2"}})), 1);
    WireMessage expected;
    expected.kind = WireKind::Call;
    expected.sender = m_channel->GetPublicName();
    expected.destination = m_partner.Name();
    expected.path = "/org/corvel/zviptvapi/DbusCommunication/IPGUTIL";
    expected.interface = "org.corvel.zviptvapi.DbusCommunication";
    expected.member = "Send";
    expected.signature = "a{sv}";
    expected.entries = Entries({{"functionname", "MuteAudio"}, {"e", ""}, {"r", record}, {"e", "2"}});
    auto const call = m_partner.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_EQ(*call, expected);
}

TEST_F(AsyncSend, ReturnsBeforeTheAnswerAndDropsIt)
{
    m_partner.SetHandler([](WireMessage const&) { return Entries({{"answer", "1"}}); });
    EXPECT_EQ(Send(Message({{"a", "1"}})), 1);
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Debug("m_SendAsyncMessage", "Sending async message with 1 key-value pairs")));
    m_log.Clear();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_INFO, "Replyed"));
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Debug("m_GAsyncMessageCallback", "Enter"),
                                                Info("m_GAsyncMessageCallback", "Replyed")));
    EXPECT_EQ(EntriesOf(m_reply), m_untouched);
}

TEST_F(AsyncSend, DoesNotWaitForASilentPartner)
{
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    auto const start = std::chrono::steady_clock::now();
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(Send(CMessageBuffer()), 1);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
    EXPECT_TRUE(m_partner.Received().WaitForCount(IsCall("Send"), 10));
}

TEST_F(AsyncSend, EveryValueButZeroIsAsynchronous)
{
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    auto const start = std::chrono::steady_clock::now();
    EXPECT_EQ(Send(CMessageBuffer(), 2), 1);
    EXPECT_EQ(Send(CMessageBuffer(), -1), 1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
    EXPECT_EQ(m_log.Count("Sending async message with 0 key-value pairs"), 2U);
}

TEST_F(AsyncSend, LogsAnErrorAsDebug)
{
    m_partner.SetHandler(
        [](WireMessage const&) { return WireAnswer::Error("org.corvel.Failed", "because"); });
    EXPECT_EQ(Send(CMessageBuffer()), 1);
    m_log.Clear();
    ASSERT_TRUE(RunUntil([&] { return m_log.Lines().size() == 2; }));
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Debug("m_GAsyncMessageCallback", "Enter"),
                            Debug("m_GAsyncMessageCallback",
                                  "Error received: 'GDBus.Error:org.corvel.Failed: because'")));
    EXPECT_EQ(EntriesOf(m_reply), m_untouched);
}

TEST_F(AsyncSend, IgnoresAReplyOfAnotherType)
{
    for (WireBody const& body : {WireBody(), WireBody::Strings({"a"})}) {
        m_log.Clear();
        m_partner.SetHandler([body](WireMessage const&) { return body; });
        EXPECT_EQ(Send(CMessageBuffer()), 1);
        ASSERT_TRUE(RunUntilLogged(ZV_LOG_INFO, "Replyed"));
        EXPECT_EQ(EntriesOf(m_reply), m_untouched);
    }
}

TEST_F(AsyncSend, RefusesAKeyThatIsNotUtf8)
{
    EXPECT_EQ(Send(Message({{"\xff", "1"}})), 0);
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR),
                ElementsAre(testing::StartsWith("Error while sending message [")));
    EXPECT_EQ(Send(CMessageBuffer()), 1) << "the connection is open";
    ASSERT_TRUE(m_partner.WaitFor(IsCall("Send")));
    EXPECT_EQ(m_partner.Received().Count(IsCall("Send")), 1U);
}

TEST_F(AsyncSend, ReportsThePartnersLossBeforeTheFailure)
{
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    int losses = 0;
    std::size_t endedAtLoss = 0;
    m_channel.onDisconnect = [&](std::string const&, std::string const&) {
        ++losses;
        endedAtLoss = m_log.Count("Enter");
    };
    EXPECT_EQ(Send(CMessageBuffer()), 1);
    ASSERT_TRUE(m_partner.WaitFor(IsCall("Send")));
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntilLogged(ZV_LOG_DEBUG, "Enter"));
    EXPECT_TRUE(RunUntil([&] { return losses == 1; }));
    EXPECT_EQ(endedAtLoss, 0U);
    EXPECT_THAT(m_log.Messages(ZV_LOG_DEBUG).back(), testing::StartsWith("Error received: '"));
}

TEST_F(ChannelTest, SendsBeforeConnectAreRefused)
{
    CProxyDBusHelper channel("IPGUTIL");
    m_log.Clear();
    CMessageBuffer message;
    CMessageBuffer reply = Message({{"old", "1"}});
    EXPECT_EQ(channel.SendMessage(message, reply, 0), 0);
    EXPECT_EQ(channel.SendMessage(message, reply, 1), 0);
    EXPECT_EQ(channel.SendNotification(message), 0);
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Failed("m_SendSyncMessage", "Connection not set."),
                                                Failed("m_SendAsyncMessage", "Connection not set."),
                                                Failed("SendNotification", "Connection not set.")));
    EXPECT_EQ(EntriesOf(reply), Entries({{"old", "1"}}));
}

TEST_F(LoopedChannelTest, TwoChannelsOfTheLibraryCommunicate)
{
    TestChannel channel("IPTVDATASUBSCRIBER"); // both ends in one
    std::vector<WireEntries> arrived;
    channel.onMessage = [&](CMessageBuffer& request) {
        arrived.push_back(EntriesOf(request));
        return Message({{"result_internal", "1"}, {"gone", ""}, {"r", std::string("\0\xff\0", 3)}});
    };
    channel.onNotification = [&](CMessageBuffer& notification) {
        arrived.push_back(EntriesOf(notification));
    };
    ASSERT_EQ(channel->Connect(channel->GetPublicName()), 1);
    CMessageBuffer message = Message({{"a", "1"}, {"gone", ""}, {"a", std::string("\0\1\0\2\0\3\0\0", 8)}});
    CMessageBuffer reply;
    EXPECT_EQ(channel->SendMessage(message, reply, 0), 1);
    EXPECT_EQ(EntriesOf(reply), Entries({{"result_internal", "1"}, {"r", std::string("\0\xff\0", 3)}}));
    EXPECT_EQ(channel->SendMessage(message, reply, 1), 1);
    EXPECT_EQ(channel->SendNotification(message), 1);
    WireEntries const expected = Entries({{"a", "1"}, {"a", std::string("\0\1\0\2\0\3\0\0", 8)}});
    std::size_t count = 0;
    EXPECT_TRUE(WaitUntil(
        [&] {
            m_loop.Run([&] { count = arrived.size(); });
            return count == 3;
        },
        patience));
    EXPECT_THAT(arrived, testing::Each(expected));
}

} // namespace
