// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"
#include "GLibObjects.h"

using namespace zviptv::test;

namespace {

/// Three contexts: that of the construction, that of Connect, and the process's default.
class ChannelContexts : public ChannelTest
{
protected:
    static bool RunOneUntil(GMainContext* context, std::function<bool()> const& condition)
    {
        ContextScope const scope(context);
        return RunUntil(condition);
    }

    ContextPtr m_constructing{g_main_context_new()};
    ContextPtr m_connecting{g_main_context_new()};
};

TEST_F(ChannelContexts, EventsArriveInTheContextThatSetThemUp)
{
    int calls = 0;
    int notifications = 0;
    int losses = 0;
    std::unique_ptr<TestChannel> channel;
    {
        ContextScope const scope(m_constructing.get());
        channel = std::make_unique<TestChannel>();
    }
    channel->onMessage = [&](CMessageBuffer&) {
        ++calls;
        return CMessageBuffer();
    };
    channel->onNotification = [&](CMessageBuffer&) { ++notifications; };
    channel->onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    {
        ContextScope const scope(m_connecting.get());
        ASSERT_EQ((*channel)->Connect(m_partner.Name()), 1);
    }
    m_partner.Emit(channel->Target("SendSignal"), WireEntries());
    m_partner.CallWithoutReply(channel->Target("Send"), WireEntries());
    ASSERT_TRUE(RunOneUntil(m_constructing.get(), [&] { return calls == 1; }));
    RunPending();
    EXPECT_EQ(notifications, 0) << "not before the context of Connect is iterated";
    ASSERT_TRUE(RunOneUntil(m_connecting.get(), [&] { return notifications == 1; }));

    WirePeer other;
    m_partner.Disconnect();
    ASSERT_TRUE(other.WaitForOwner(m_partner.Name(), false));
    other.CallWithoutReply(channel->Target("Send"), WireEntries());
    ASSERT_TRUE(RunOneUntil(m_constructing.get(), [&] { return calls == 2; }));
    RunPending();
    EXPECT_EQ(losses, 0);
    ASSERT_TRUE(RunOneUntil(m_connecting.get(), [&] { return losses == 1; }));
    channel->Destroy();
    for (GMainContext* const context : {m_constructing.get(), m_connecting.get()}) {
        ContextScope const scope(context);
        RunPending(); // they also deliver the ends of registrations
    }
}

TEST_F(ChannelContexts, CompletionsArriveInTheContextOfTheSend)
{
    m_partner.SetHandler([](WireMessage const&) { return WireEntries(); });
    TestChannel channel;
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    CMessageBuffer message;
    CMessageBuffer reply;
    ContextPtr const sending(g_main_context_new());
    {
        ContextScope const scope(sending.get());
        ASSERT_EQ(channel->SendMessage(message, reply, 1), 1);
    }
    EXPECT_EQ(channel->SendMessage(message, reply, 0), 1) << "its answer comes after the first one's";
    RunPending();
    EXPECT_EQ(m_log.Count("Enter"), 0U);
    EXPECT_TRUE(RunOneUntil(sending.get(), [&] { return m_log.Count("Enter") == 1; }));
}

/// GIO reports it through the context in which the connection was made, the channel through that of Connect.
TEST_F(ChannelContexts, ALossOfTheBusArrivesInBothContexts)
{
    TestChannel former;
    SharedConnection();
    m_bus.Restart();
    int losses = 0;
    std::unique_ptr<TestChannel> channel;
    {
        ContextScope const scope(m_constructing.get());
        channel = std::make_unique<TestChannel>("PLAYERCONTROL"); // opens the connection to the new bus
    }
    channel->onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    int notifications = 0;
    channel->onNotification = [&](CMessageBuffer&) { ++notifications; };
    WirePeer partner;
    {
        ContextScope const scope(m_connecting.get());
        ASSERT_EQ((*channel)->Connect(partner.Name()), 1);
    }
    CMessageBuffer message;
    ASSERT_EQ((*channel)->SendNotification(message), 1);
    ASSERT_TRUE(partner.WaitFor(IsSignal("SendSignal"))); // the bus has answered all earlier requests
    partner.Emit(channel->Target("SendSignal"), WireEntries());
    ASSERT_TRUE(RunOneUntil(m_connecting.get(), [&] { return notifications == 1; }));
    m_bus.Kill();
    ASSERT_TRUE(RunUntil([&] { return (*channel)->SendNotification(message) == 0; }));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "Error while sending signal [18] The connection is closed"));
    {
        ContextScope const scope(m_connecting.get());
        RunPending();
    }
    EXPECT_EQ(losses, 0) << "not before the context of the connection is iterated";
    {
        ContextScope const scope(m_constructing.get());
        ASSERT_TRUE(RunUntil([this] { return g_main_context_pending(m_connecting.get()) != FALSE; }));
    }
    EXPECT_EQ(losses, 0) << "not before the context of Connect is iterated";
    EXPECT_TRUE(RunOneUntil(m_connecting.get(), [&] { return losses == 1; }));
    channel->Destroy();
    for (GMainContext* const context : {m_constructing.get(), m_connecting.get()}) {
        ContextScope const scope(context);
        RunPending();
    }
}

TEST_F(ChannelContexts, WithoutALoopNothingIsDelivered)
{
    TestChannel channel;
    int events = 0;
    channel.onNotification = [&](CMessageBuffer&) { ++events; };
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++events; };
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    m_partner.Emit(channel.Target("SendSignal"), WireEntries());
    m_partner.Sync();
    m_partner.Disconnect();
    CMessageBuffer message;
    CMessageBuffer reply;
    EXPECT_EQ(channel->SendMessage(message, reply, 0),
              0); // after this answer, all of it has been received
    EXPECT_EQ(events, 0);
    EXPECT_TRUE(channel->IsConnectionReady());
    EXPECT_TRUE(RunUntil([&] { return events == 2; }));
}

} // namespace
