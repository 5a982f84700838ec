// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"
#include "LateCallProbe.h"

#include <atomic>
#include <thread>

using namespace zviptv::test;

namespace {

constexpr int Rounds = 200;

/// Channels are destroyed by the test's thread while the loop's thread delivers to them.
class ChannelDestroyedMeanwhile : public BusTest
{
protected:
    /// In each round: connects, sends `flood`, waits for a few deliveries, destroys.
    void Run(std::function<void(WireTarget const&)> const& flood, char const* member)
    {
        for (int round = 0; round < Rounds; ++round) {
            auto probe = std::make_unique<LateCallProbe>(m_lateCalls, 20);
            auto channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
            channel->SetCallback(LateCallProbe::OnMessage, LateCallProbe::OnNotification, probe.get());
            ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
            flood(
                {channel->GetPublicName(), std::string(ChannelObject) + "IPGUTIL", ChannelInterface, member});
            int const enough = round % 40;
            ASSERT_TRUE(WaitUntil([&] { return probe->touched >= enough; }, patience));
            channel.reset();
            probe->gone = true;
            int const touched = probe->touched;
            m_loop.Run([] {}); // callbacks that were running on the loop's thread have ended
            ASSERT_EQ(probe->touched, touched);
        }
        EXPECT_EQ(m_lateCalls, 0);
    }

    std::atomic<int> m_lateCalls{0};
    CProxyDBusHelper m_other{"PLAYERCONTROL"}; // keeps the connection
    LoopThread m_loop;
};

TEST_F(ChannelDestroyedMeanwhile, ByAFloodOfNotifications)
{
    m_partner.SetRecording(false);
    Run(
        [this](WireTarget const& target) {
            m_partner.EmitMany(target, Entries({{"k", "v"}}), 100);
        },
        "SendSignal");
}

TEST_F(ChannelDestroyedMeanwhile, ByAFloodOfCalls)
{
    m_partner.SetRecording(false);
    auto const flood = [this](WireTarget const& target) {
        for (int i = 0; i < 100; ++i) {
            m_partner.CallWithoutReply(target, Entries({{"k", "v"}}));
        }
    };
    Run(flood, "Send");
}

/// The data of the disconnect handler of a channel that another thread destroys.
std::atomic<int> disconnects{0};

TEST_F(ChannelDestroyedMeanwhile, ByThePartnersLoss)
{
    for (int round = 0; round < Rounds; ++round) {
        disconnects = 0;
        WirePeer partner;
        auto channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
        channel->SetDisconnectNotiCB([](std::string, std::string, void*) { ++disconnects; }, nullptr);
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        partner.Disconnect();
        if (round % 3 == 0) {
            ASSERT_TRUE(m_partner.WaitForOwner(partner.Name(), false));
        }
        if (round % 3 == 1) {
            ASSERT_TRUE(WaitUntil([&] { return !channel->IsConnectionReady(); }, patience));
        }
        channel.reset();
        m_loop.Run([] {});
        ASSERT_LE(disconnects, 1);
        if (round % 3 == 1) {
            ASSERT_EQ(disconnects, 1);
        }
    }
}

TEST_F(ChannelDestroyedMeanwhile, ByCompletionsOfAsynchronousSends)
{
    m_partner.SetRecording(false);
    m_partner.SetHandler([](WireMessage const&) { return Entries({{"k", "v"}}); });
    for (int round = 0; round < Rounds; ++round) {
        CProxyDBusHelper channel("IPGUTIL");
        ASSERT_EQ(channel.Connect(m_partner.Name()), 1);
        for (int i = 0; i < 20; ++i) {
            CMessageBuffer message;
            CMessageBuffer reply;
            ASSERT_EQ(channel.SendMessage(message, reply, 1), 1);
        }
    }
}

/// The channel of a user, with a lock that the disconnect handler and others take.
struct Holder
{
    void Destroy()
    {
        std::lock_guard<std::mutex> const lock(mutex);
        channel.reset();
    }

    std::mutex mutex;
    std::unique_ptr<CProxyDBusHelper> channel;
    std::atomic<int> disconnects{0};
};

TEST_F(ChannelDestroyedMeanwhile, ByItsDisconnectHandlerOnTheLoopThread)
{
    Holder holder;
    auto const onLoss = [](std::string, std::string, void* data) {
        auto& self = *static_cast<Holder*>(data);
        self.Destroy();
        ++self.disconnects;
    };
    for (int round = 0; round < Rounds; ++round) {
        WirePeer partner;
        holder.channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
        holder.channel->SetDisconnectNotiCB(onLoss, &holder);
        ASSERT_EQ(holder.channel->Connect(partner.Name()), 1);
        partner.Disconnect();
        if (round % 2 == 0) {
            ASSERT_TRUE(m_partner.WaitForOwner(partner.Name(), false));
        }
        holder.Destroy();
        m_loop.Run([] {});
        ASSERT_LE(holder.disconnects, round + 1);
    }
}

/// A sender on one thread, the loss on the loop's, again and again on the same channel.
TEST_F(ChannelDestroyedMeanwhile, LostWhileSending)
{
    CProxyDBusHelper channel("IPGUTIL");
    std::atomic<bool> stop{false};
    std::thread sender([&] {
        while (!stop) {
            CMessageBuffer message = Message({{"k", "v"}});
            CMessageBuffer reply;
            channel.SendMessage(message, reply, 0);
            channel.SendMessage(message, reply, 1);
            channel.SendNotification(message);
        }
    });
    for (int round = 0; round < Rounds / 4; ++round) {
        WirePeer partner;
        partner.SetHandler([](WireMessage const&) { return WireEntries(); });
        EXPECT_EQ(channel.Connect(partner.Name()), 1);
        EXPECT_TRUE(partner.WaitFor(IsCall("Send")));
        partner.Disconnect();
        EXPECT_TRUE(WaitUntil([&] { return !channel.IsConnectionReady(); }, patience));
    }
    stop = true;
    sender.join();
}

} // namespace
