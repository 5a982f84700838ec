#include "ChannelFixture.h"
#include "ExpectedLeaks.h"
#include "Thrown.h"

#include <future>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

/// Counts the exceptions that come out of the loop.
class Exceptions : public BusTest
{
protected:
    Exceptions() { ExpectLeaks(); }

    int m_caught = 0;
};

TEST_F(Exceptions, OutOfNotificationHandlersLeaveLaterMessagesDelivered)
{
    TestChannel channel;
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    int notifications = 0;
    channel.onNotification = [&](CMessageBuffer&) {
        if (++notifications <= Throws) {
            throw Thrown();
        }
    };
    m_partner.EmitMany(channel.Target("SendSignal"), WireEntries(), Throws + 5);
    EXPECT_TRUE(RunCounting(m_caught, [&] { return notifications == Throws + 5; }));
    EXPECT_EQ(m_caught, Throws);
    EXPECT_EQ(CProxyDBusHelper::GetSenderName(), "");
}

TEST_F(Exceptions, OutOfMessageHandlersLeaveTheCallUnansweredAndLaterOnesAnswered)
{
    TestChannel channel;
    int calls = 0;
    channel.onMessage = [&](CMessageBuffer&) {
        if (++calls <= Throws) {
            throw Thrown();
        }
        return Message({{"n", std::to_string(calls)}});
    };
    WireTarget const target = channel.Target("Send");
    auto replies = std::async(std::launch::async, [&] {
        for (int i = 1; i < Throws; ++i) {
            m_partner.CallWithoutReply(target, WireEntries());
        }
        std::vector<WireMessage> both;
        both.push_back(m_partner.Call(target, WireEntries(), {200ms, false}));
        both.push_back(m_partner.Call(target, WireEntries()));
        return both;
    });
    EXPECT_TRUE(RunCounting(m_caught, [&] { return replies.wait_for(0s) == std::future_status::ready; }));
    std::vector<WireMessage> const both = replies.get();
    EXPECT_EQ(both[0].errorName, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(both[1].Value("n"), std::to_string(Throws + 1));
    EXPECT_EQ(m_caught, Throws);
}

TEST_F(Exceptions, OutOfDisconnectHandlersReleaseTheLock)
{
    TestChannel channel;
    int losses = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) {
        ++losses;
        throw Thrown();
    };
    for (int round = 1; round <= Throws; ++round) {
        WirePeer partner;
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        partner.Disconnect();
        ASSERT_TRUE(
            RunCounting(m_caught, [&] { return losses == round; })); // for ever, if the lock were still held
        EXPECT_FALSE(channel->IsConnectionReady());
    }
    EXPECT_TRUE(RunCounting(m_caught, [&] { return m_caught == Throws; }));
}

TEST_F(Exceptions, DoNotHoldUpTheDestructor)
{
    {
        TestChannel channel;
        ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
        channel.onNotification = [](CMessageBuffer&) { throw Thrown(); };
        m_partner.Emit(channel.Target("SendSignal"), WireEntries());
        EXPECT_TRUE(RunCounting(m_caught, [&] { return m_caught == 1; }));
    }
    auto destroyed = std::async(std::launch::async, [this] {
        CProxyDBusHelper channel("IPGUTIL");
        return channel.Connect(m_partner.Name());
    });
    EXPECT_EQ(destroyed.get(), 1);
}

} // namespace
