// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "ChannelFixture.h"

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

class NotificationSend : public ChannelTest
{
protected:
    NotificationSend() { EXPECT_EQ(m_channel->Connect(m_partner.Name()), 1); }

    TestChannel m_channel{"IPTVDATASUBSCRIBER"};
};

TEST_F(NotificationSend, IsAUnicastSignal)
{
    WirePeer bystander;
    bystander.AddMatch("type='signal',interface='org.corvel.zviptvapi.DbusCommunication'");
    m_log.Clear();
    std::string const record("\0\1\0\2\0\3\0\0", 8);
    CMessageBuffer message = Message({{"z", "1"}, {"e", ""}, {"z", "2"}, {"r", record}});
    EXPECT_EQ(m_channel->SendNotification(message), 1);
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Debug("SendNotification", "Sending signal with 4 key-value pairs")));
    WireMessage expected;
    expected.kind = WireKind::Signal;
    expected.sender = m_channel->GetPublicName();
    expected.destination = m_partner.Name();
    expected.path = "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER";
    expected.interface = "org.corvel.zviptvapi.DbusCommunication";
    expected.member = "SendSignal";
    expected.signature = "a{sv}";
    expected.noReply = true;
    expected.entries = Entries({{"z", "1"}, {"e", ""}, {"z", "2"}, {"r", record}});
    auto const seen = m_partner.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(seen);
    EXPECT_EQ(*seen, expected);
    bystander.Sync();
    EXPECT_EQ(bystander.Received().Count(IsSignal("SendSignal")), 0U);
}

TEST_F(NotificationSend, AnEmptyMessageIsAnEmptyDictionary)
{
    CMessageBuffer message;
    EXPECT_EQ(m_channel->SendNotification(message), 1);
    auto const seen = m_partner.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->signature, "a{sv}");
    EXPECT_EQ(seen->entries, WireEntries());
}

TEST_F(NotificationSend, RefusesAKeyThatIsNotUtf8)
{
    CMessageBuffer bad = Message({{"\xff", "1"}});
    EXPECT_EQ(m_channel->SendNotification(bad), 0);
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR),
                ElementsAre(testing::StartsWith("Error while sending signal [")));
    CMessageBuffer good = Message({{"k", "v"}});
    EXPECT_EQ(m_channel->SendNotification(good), 1);
    auto const seen = m_partner.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->entries, Entries({{"k", "v"}}));
}

TEST_F(NotificationSend, KeepsTheOrderOfMany)
{
    for (int i = 0; i < 500; ++i) {
        CMessageBuffer message = Message({{"n", std::to_string(i)}});
        ASSERT_EQ(m_channel->SendNotification(message), 1);
    }
    ASSERT_TRUE(m_partner.Received().WaitForCount(IsSignal("SendSignal"), 500));
    int next = 0;
    for (WireMessage const& seen : m_partner.Received().All()) {
        if (seen.member == "SendSignal") {
            EXPECT_EQ(seen.Value("n"), std::to_string(next++));
        }
    }
}

TEST_F(NotificationSend, AfterLossItIsRefused)
{
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return !m_channel->IsConnectionReady(); }));
    m_log.Clear();
    CMessageBuffer message;
    EXPECT_EQ(m_channel->SendNotification(message), 0);
    EXPECT_THAT(LoggedLines(m_log), ElementsAre(Failed("SendNotification", "Connection not set.")));
}

} // namespace
