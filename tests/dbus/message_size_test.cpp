// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "ChannelFixture.h"

using namespace zviptv::test;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

constexpr std::size_t Mebibyte = 1024 * 1024;

/// Bytes around the value of a message's only entry, when its key is one character: array length and padding
/// (8), key (4 + 2), signature (4), padding (2), array length (4).
constexpr std::size_t AroundTheValue = 24;

class MessageSize : public LoopedChannelTest
{
protected:
    MessageSize()
    {
        m_partner.SetHandler([](WireMessage const& call) {
            return Entries({{"size", std::to_string(call.Value("v").size())}});
        });
        EXPECT_EQ(m_channel->Connect(m_partner.Name()), 1);
    }

    int Send(CMessageBuffer message, int async = 0)
    {
        return m_channel->SendMessage(message, m_reply, async);
    }

    TestChannel m_channel;
    CMessageBuffer m_reply;
};

TEST_F(MessageSize, SendsLargeRequests)
{
    std::string const value = PatternBytes(31 * Mebibyte);
    EXPECT_EQ(Send(Message({{"v", value}}), 1), 1);
    auto const call = m_partner.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_TRUE(call->Value("v") == value);
}

TEST_F(MessageSize, SendsLargeReplies)
{
    std::string const value = PatternBytes(31 * Mebibyte);
    m_partner.SetHandler([value](WireMessage const&) { return Entries({{"v", value}}); });
    int sent = 0;
    for (int i = 0; i < 10 && sent == 0; ++i) { // a loaded machine may need more than the two seconds
        sent = Send(CMessageBuffer());
    }
    EXPECT_EQ(sent, 1);
    EXPECT_TRUE(m_reply.GetValue("v") == value);
}

TEST_F(MessageSize, SendsTheLargestMessageAndRefusesALargerOne)
{
    std::size_t const largest = static_cast<std::size_t>(CProxyDBusHelper::MAX_BODY_SIZE) - AroundTheValue;
    EXPECT_EQ(Send(Message({{"v", std::string(largest, 'x')}}), 1), 1);
    auto const call = m_partner.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_EQ(call->Value("v").size(), largest);
    CMessageBuffer notification = Message({{"v", std::string(largest, 'x')}});
    EXPECT_EQ(m_channel->SendNotification(notification), 1);
    auto const seen = m_partner.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->Value("v").size(), largest);
    CMessageBuffer const larger = Message({{"v", std::string(largest + 1, 'x')}});
    EXPECT_EQ(Send(larger), 0);
    EXPECT_EQ(Send(larger, 1), 0);
    notification = larger;
    EXPECT_EQ(m_channel->SendNotification(notification), 0);
    EXPECT_EQ(Send(CMessageBuffer()), 1);
}

TEST_F(MessageSize, LargeNotificationsArrive)
{
    std::string const value = PatternBytes(31 * Mebibyte);
    std::size_t size = 0;
    bool same = false;
    m_channel.onNotification = [&](CMessageBuffer& message) {
        same = message.GetValue("v") == value;
        size = value.size();
    };
    m_partner.Emit(m_channel.Target("SendSignal"), Entries({{"v", value}}));
    EXPECT_EQ(m_partner.Call(m_channel.Target("Send"), WireEntries()).kind, WireKind::Reply);
    EXPECT_EQ(size, value.size());
    EXPECT_TRUE(same);
}

class OverSize : public MessageSize, public testing::WithParamInterface<std::size_t>
{
protected:
    CMessageBuffer const m_message = Message({{"v", std::string(GetParam() * Mebibyte, 'x')}});
};

INSTANTIATE_TEST_SUITE_P(MiB, OverSize, testing::Values(32, 33, 64, 129), testing::PrintToStringParamName());

TEST_P(OverSize, RequestsAreRefusedAndTheConnectionStaysOpen)
{
    m_reply = Message({{"old", "1"}});
    EXPECT_EQ(Send(m_message), 0);
    EXPECT_EQ(Send(m_message, 1), 0);
    EXPECT_EQ(EntriesOf(m_reply), Entries({{"old", "1"}}));
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR), ElementsAre(StartsWith("Error while sending message ["),
                                                          StartsWith("Error while sending message [")));
    EXPECT_EQ(Send(CMessageBuffer()), 1);
    EXPECT_TRUE(m_channel->IsConnectionReady());
}

TEST_P(OverSize, NotificationsAreRefusedAndTheConnectionStaysOpen)
{
    CMessageBuffer message = m_message;
    EXPECT_EQ(m_channel->SendNotification(message), 0);
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR), ElementsAre(StartsWith("Error while sending signal [")));
    CMessageBuffer small;
    EXPECT_EQ(m_channel->SendNotification(small), 1);
    EXPECT_TRUE(m_partner.WaitFor(IsSignal("SendSignal")));
}

TEST_P(OverSize, AnswersBecomeErrorsAndTheConnectionStaysOpen)
{
    m_channel.onMessage = [this](CMessageBuffer& request) {
        return request.Size() == 0 ? m_message : CMessageBuffer();
    };
    EXPECT_EQ(m_partner.Call(m_channel.Target("Send"), WireEntries()).kind, WireKind::Error);
    EXPECT_EQ(m_partner.Call(m_channel.Target("Send"), Entries({{"a", "b"}})).kind, WireKind::Reply);
}

TEST_F(MessageSize, CountsThePaddingOfSmallEntries)
{
    CMessageBuffer message; // 24 bytes each on the wire, of which 2 are key and value
    for (int i = 0; i < 1500000; ++i) {
        message.AddValue("k", 1, "v");
    }
    EXPECT_EQ(Send(message), 0);
    EXPECT_EQ(Send(CMessageBuffer()), 1);
}

} // namespace
