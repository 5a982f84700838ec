// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

class IncomingSignal : public ChannelTest
{
protected:
    IncomingSignal()
    {
        ConnectAndSettle(m_channel);
        m_channel.onNotification = [this](CMessageBuffer& message) {
            m_arrived.push_back(EntriesOf(message));
            m_senders.push_back(CProxyDBusHelper::GetSenderName());
        };
    }

    void Emit(WireBody const& body, std::string const& member = "SendSignal")
    {
        m_partner.Emit(m_channel.Target(member), body);
    }

    /// Emits a last signal and runs the loop until it arrives, so that all earlier ones have been handled.
    void Finish()
    {
        Emit(Entries({{"the", "end"}}));
        ASSERT_TRUE(RunUntil([this] {
            return !m_arrived.empty() && m_arrived.back() == Entries({{"the", "end"}});
        }));
        m_arrived.pop_back();
    }

    TestChannel m_channel{"IPTVDATASUBSCRIBER"};
    std::vector<WireEntries> m_arrived;
    std::vector<std::string> m_senders;
};

TEST_F(IncomingSignal, ArrivesUnchangedWithoutEmptyValues)
{
    std::string const record("\0\1\0\2\0\3\0\0", 8);
    Emit(Entries({{"z", "1"}, {"e", ""}, {"z", "2"}, {"r", record}}));
    Emit(WireEntries());
    Finish();
    EXPECT_THAT(m_arrived, ElementsAre(Entries({{"z", "1"}, {"z", "2"}, {"r", record}}), WireEntries()));
    EXPECT_THAT(m_senders, testing::Each(m_partner.Name()));
}

TEST_F(IncomingSignal, IsLogged)
{
    Emit(WireEntries());
    ASSERT_TRUE(RunUntil([this] { return m_arrived.size() == 1; }));
    EXPECT_THAT(
        LoggedLines(m_log),
        ElementsAre(Debug("m_SignalCallback",
                          "m_SignalCallback sender=" + m_partner.Name() +
                              " obj_path=/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER "
                              "iface_name=org.corvel.zviptvapi.DbusCommunication signal_name=SendSignal")));
}

TEST_F(IncomingSignal, AcceptsAnyName)
{
    Emit(Entries({{"k", "v"}}), "Anything");
    Finish();
    EXPECT_THAT(m_arrived, ElementsAre(Entries({{"k", "v"}})));
}

TEST_F(IncomingSignal, AcceptsABroadcastOfThePartner)
{
    WireTarget target = m_channel.Target("SendSignal");
    target.destination.clear();
    m_partner.Emit(target, Entries({{"k", "v"}}));
    Finish();
    EXPECT_THAT(m_arrived, ElementsAre(Entries({{"k", "v"}})));
}

TEST_F(IncomingSignal, IgnoresOtherSenders)
{
    WirePeer stranger;
    stranger.Emit(m_channel.Target("SendSignal"), Entries({{"forged", "1"}}));
    WireTarget broadcast = m_channel.Target("SendSignal");
    broadcast.destination.clear();
    stranger.Emit(broadcast, Entries({{"forged", "2"}}));
    stranger.Sync();
    Finish();
    EXPECT_THAT(m_arrived, ElementsAre());
}

TEST_F(IncomingSignal, IgnoresOtherPathsAndInterfaces)
{
    WireTarget target = m_channel.Target("SendSignal");
    target.path += "X";
    m_partner.Emit(target, WireEntries());
    target.path = "/org/corvel/zviptvapi/DbusCommunication";
    m_partner.Emit(target, WireEntries());
    target = m_channel.Target("SendSignal");
    target.interface = "org.corvel.zviptvapi.Other";
    m_partner.Emit(target, WireEntries());
    Finish();
    EXPECT_THAT(m_arrived, ElementsAre());
}

TEST_F(IncomingSignal, IgnoresBodiesOfAnotherType)
{
    Emit(WireBody());
    Emit(WireBody::Strings({"a"}));
    Emit(WireBody::Strings({"a", "b"}));
    Emit(Pairs({{"a", "b"}}));
    Finish();
    EXPECT_THAT(m_arrived, ElementsAre());
}

TEST_F(IncomingSignal, OmitsVariantsThatAreNotByteArrays)
{
    Emit(WireBody::Variants({TextVariant("s", "text"), BytesVariant("k", "v"), NumberVariant("n", 5)}));
    Finish();
    EXPECT_THAT(m_arrived, ElementsAre(Entries({{"k", "v"}})));
}

TEST_F(IncomingSignal, WithoutHandlerItIsDiscarded)
{
    m_channel->SetCallback(nullptr, nullptr, nullptr);
    Emit(Entries({{"k", "v"}}));
    ASSERT_TRUE(RunUntil([this] { return m_log.Lines().size() == 1; }));
    EXPECT_THAT(m_log.Messages(ZV_LOG_DEBUG), ElementsAre(testing::StartsWith("m_SignalCallback sender=")));
    EXPECT_THAT(m_arrived, ElementsAre());
    EXPECT_TRUE(m_channel->IsConnectionReady());
}

TEST_F(IncomingSignal, KeepsTheOrderOfMany)
{
    for (int i = 0; i < 1000; ++i) {
        Emit(Entries({{"n", std::to_string(i)}}));
    }
    Finish();
    ASSERT_EQ(m_arrived.size(), 1000U);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(m_arrived[static_cast<std::size_t>(i)], Entries({{"n", std::to_string(i)}}));
    }
}

TEST_F(IncomingSignal, QueuedSignalsArriveBeforeTheLoss)
{
    std::size_t arrivedAtLoss = 0;
    bool lost = false;
    m_channel.onDisconnect = [&](std::string const&, std::string const&) {
        arrivedAtLoss = m_arrived.size();
        lost = true;
    };
    for (int i = 0; i < 100; ++i) {
        Emit(Entries({{"n", std::to_string(i)}}));
    }
    m_partner.Sync();
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return lost; }));
    EXPECT_EQ(arrivedAtLoss, 100U);
}

TEST_F(ChannelTest, BeforeConnectNoSignalArrives)
{
    TestChannel channel;
    int notifications = 0;
    int calls = 0;
    channel.onNotification = [&](CMessageBuffer&) { ++notifications; };
    channel.onMessage = [&](CMessageBuffer&) {
        ++calls;
        return CMessageBuffer();
    };
    m_partner.Emit(channel.Target("SendSignal"), WireEntries());
    m_partner.CallWithoutReply(channel.Target("Send"), WireEntries());
    ASSERT_TRUE(RunUntil([&] { return calls == 1; }));
    EXPECT_EQ(notifications, 0);
}

} // namespace
