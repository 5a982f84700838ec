// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

#include <atomic>
#include <future>
#include <mutex>
#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

using ChannelTeardown = BusTest;

TEST_F(ChannelTeardown, InsideTheNotificationHandler)
{
    TestChannel channel;
    TestChannel other("PLAYERCONTROL");
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    int notifications = 0;
    bool done = false;
    channel.onNotification = [&](CMessageBuffer& message) {
        ++notifications;
        channel.Destroy();
        EXPECT_EQ(EntriesOf(message), Entries({{"k", "v"}}));
        EXPECT_EQ(CProxyDBusHelper::GetSenderName(), m_partner.Name());
    };
    other.onMessage = [&](CMessageBuffer&) {
        done = true;
        return CMessageBuffer();
    };
    m_partner.EmitMany(channel.Target("SendSignal"), Entries({{"k", "v"}}), 20);
    m_partner.CallWithoutReply(other.Target("Send"), WireEntries());
    ASSERT_TRUE(RunUntil([&] { return done; }));
    EXPECT_EQ(notifications, 1);
    EXPECT_TRUE(channel.IsDestroyed());
}

TEST_F(ChannelTeardown, InsideTheMessageHandler)
{
    TestChannel const other("PLAYERCONTROL"); // keeps the connection
    TestChannel channel;
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    WireTarget const target = channel.Target("Send");
    channel.onMessage = [&](CMessageBuffer&) {
        channel.Destroy();
        return Message({{"last", "words"}});
    };
    auto reply = std::async(std::launch::async, [&] { return m_partner.Call(target, WireEntries()); });
    ASSERT_TRUE(RunUntil([&] { return channel.IsDestroyed(); }));
    EXPECT_EQ(reply.get().Value("last"), "words");
    RunPending();
}

TEST_F(ChannelTeardown, InsideTheDisconnectHandler)
{
    TestChannel channel;
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    int losses = 0;
    channel.onDisconnect = [&](std::string const& partner, std::string const& own) {
        ++losses;
        channel.Destroy();
        EXPECT_EQ(partner, m_partner.Name());
        EXPECT_EQ(own, "IPGUTIL");
    };
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return losses > 0; }));
    RunPending();
    EXPECT_EQ(losses, 1);
}

TEST_F(ChannelTeardown, InsideTheDisconnectHandlerWithCallsOutstanding)
{
    TestChannel other("PLAYERCONTROL"); // keeps the connection
    LogCapture log;
    TestChannel channel;
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    channel.onDisconnect = [&](std::string const&, std::string const&) { channel.Destroy(); };
    for (int i = 0; i < 20; ++i) {
        CMessageBuffer message;
        CMessageBuffer reply;
        ASSERT_EQ(channel->SendMessage(message, reply, 1), 1);
    }
    ASSERT_TRUE(m_partner.Received().WaitForCount(IsCall("Send"), 20));
    m_partner.Disconnect();
    EXPECT_TRUE(RunUntil([&] { return channel.IsDestroyed() && log.Count("Enter") == 20; }));
}

TEST_F(ChannelTeardown, WithAnAsynchronousCallOutstanding)
{
    TestChannel other("PLAYERCONTROL"); // keeps the connection
    LogCapture log;
    CMessageBuffer message;
    CMessageBuffer reply;
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    {
        TestChannel channel;
        ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
        ASSERT_EQ(channel->SendMessage(message, reply, 1), 1);
        ASSERT_TRUE(m_partner.WaitFor(IsCall("Send")));
    }
    m_partner.Disconnect();
    ASSERT_TRUE(RunUntil([&] { return log.Count("Enter") == 1; }));
    EXPECT_EQ(log.Count("Replyed"), 0U);
}

TEST_F(ChannelTeardown, AReplyToADestroyedChannelIsDropped)
{
    TestChannel other("PLAYERCONTROL"); // keeps the connection
    LogCapture log;
    CMessageBuffer message;
    CMessageBuffer reply;
    m_partner.SetHandler([](WireMessage const&) { return Entries({{"k", "v"}}); });
    {
        TestChannel channel;
        ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
        ASSERT_EQ(channel->SendMessage(message, reply, 1), 1);
    }
    ASSERT_TRUE(RunUntil([&] { return log.Count("Replyed") == 1; }));
    EXPECT_EQ(reply.Size(), 0);
}

/// A handler that is running when another thread begins to destroy its channel.
class RunningHandler : public LoopedChannelTest, public testing::WithParamInterface<char const*>
{
protected:
    void Run()
    {
        m_entered.set_value();
        m_leave.get_future().wait();
        for (int i = 0; i < 2000; ++i) { // time for a destructor that does not wait
            std::this_thread::yield();
        }
        m_left = true;
    }

    std::promise<void> m_entered;
    std::promise<void> m_leave;
    std::atomic<bool> m_left{false};
    TestChannel m_channel;
};

INSTANTIATE_TEST_SUITE_P(Channel, RunningHandler, testing::Values("Send", "SendSignal"),
                         [](auto const& parameter) { return std::string(parameter.param); });

TEST_P(RunningHandler, IsWaitedFor)
{
    m_channel.onNotification = [this](CMessageBuffer&) { Run(); };
    m_channel.onMessage = [this](CMessageBuffer&) {
        Run();
        return CMessageBuffer();
    };
    ASSERT_EQ(m_channel->Connect(m_partner.Name()), 1);
    if (GetParam() == std::string("Send")) {
        m_partner.CallWithoutReply(m_channel.Target("Send"), WireEntries());
    } else {
        m_partner.Emit(m_channel.Target("SendSignal"), WireEntries());
    }
    ASSERT_EQ(m_entered.get_future().wait_for(patience), std::future_status::ready);
    m_log.Clear();
    auto leftBefore = std::async(std::launch::async, [this] {
        m_channel.Destroy();
        return m_left.load();
    });
    EXPECT_TRUE(WaitUntilLogged(ZV_LOG_ERROR, "")) << "the destructor's entry line";
    m_leave.set_value();
    EXPECT_TRUE(leftBefore.get());
}

/// A disconnect handler that needs a lock which the destroying thread holds.
class BlockedHandler : public BusTest
{
protected:
    BlockedHandler()
    {
        m_channel->SetDisconnectNotiCB(Handle, this);
        EXPECT_EQ(m_channel->Connect(m_partner.Name()), 1);
    }

    static void Handle(std::string, std::string, void* data)
    {
        auto& self = *static_cast<BlockedHandler*>(data);
        self.m_entered.set_value();
        std::lock_guard<std::mutex> const lock(self.m_owner);
        self.m_left = true;
    }

    std::mutex m_owner;
    std::promise<void> m_entered;
    std::atomic<bool> m_left{false};
    std::unique_ptr<CProxyDBusHelper> m_channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
    LoopThread m_loop;
};

TEST_F(BlockedHandler, IsNotWaitedFor)
{
    std::unique_lock<std::mutex> lock(m_owner);
    m_partner.Disconnect();
    ASSERT_EQ(m_entered.get_future().wait_for(patience), std::future_status::ready);
    auto destroyed = std::async(std::launch::async, [this] { m_channel.reset(); });
    EXPECT_EQ(destroyed.wait_for(patience), std::future_status::ready)
        << "the destructor waits for the handler";
    EXPECT_FALSE(m_left);
    lock.unlock();
    destroyed.wait();
    EXPECT_TRUE(WaitUntil([this] { return m_left.load(); }, patience));
}

} // namespace
