// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"
#include "ExpectedLeaks.h"
#include "Thrown.h"

#include <atomic>
#include <future>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

/// Counts the exceptions that leave the loop.
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

TEST_F(Exceptions, OutOfMessageHandlersAreAnErrorForTheCallerAndLaterCallsAreAnswered)
{
    int const manyThrows = 150; // more calls than the bus lets one connection leave unanswered
    TestChannel channel;
    int calls = 0;
    channel.onMessage = [&](CMessageBuffer&) {
        if (++calls <= manyThrows) {
            throw Thrown();
        }
        return Message({{"n", std::to_string(calls)}});
    };
    WireTarget const target = channel.Target("Send");
    auto replies = std::async(std::launch::async, [&] {
        for (int i = 0; i < manyThrows; ++i) {
            WireMessage const reply = m_partner.Call(target, WireEntries());
            EXPECT_EQ(reply.errorName, "org.freedesktop.DBus.Error.NoReply");
            EXPECT_EQ(reply.strings, std::vector<std::string>{"The service gives no answer"});
        }
        return m_partner.Call(target, WireEntries());
    });
    EXPECT_TRUE(RunCounting(m_caught, [&] { return replies.wait_for(0s) == std::future_status::ready; }));
    EXPECT_EQ(replies.get().Value("n"), std::to_string(manyThrows + 1));
    EXPECT_EQ(m_caught, manyThrows);
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
            RunCounting(m_caught, [&] { return losses == round; })); // forever, if the lock were still held
        EXPECT_FALSE(channel->IsConnectionReady());
    }
    EXPECT_TRUE(RunCounting(m_caught, [&] { return m_caught == Throws; }));
}

TEST_F(Exceptions, DoNotBlockADestructorOnAnotherThread)
{
    CProxyDBusHelper const other("PLAYERCONTROL"); // keeps the connection
    TestChannel channel;
    channel.onNotification = [](CMessageBuffer&) { throw Thrown(); };
    channel.onMessage = [](CMessageBuffer&) -> CMessageBuffer { throw Thrown(); };
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    std::atomic<bool> thrown{false};
    std::atomic<bool> stop{false};
    auto loop = std::async(std::launch::async, [&] {
        return RunCounting(m_caught, [&] {
            thrown = m_caught == 2;
            return stop.load();
        });
    });
    m_partner.Emit(channel.Target("SendSignal"), WireEntries());
    m_partner.CallWithoutReply(channel.Target("Send"), WireEntries());
    EXPECT_TRUE(WaitUntil([&] { return thrown.load(); }, patience));
    channel.Destroy(); // would wait forever if a callback had not ended
    stop = true;
    EXPECT_TRUE(loop.get());
}

} // namespace
