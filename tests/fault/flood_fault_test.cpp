// SPDX-License-Identifier: MIT
#include "FaultTest.h"
#include "LateCallProbe.h"

#include <atomic>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

/// One thread makes and deletes channels while another one delivers messages to them, 30,000 a second if the
/// machine is fast enough. The row contains the actual number.
class FloodFault : public FaultTest
{
protected:
    FloodFault() { AllowMemory(16384); } // messages that wait for the loop

    /// Makes a channel that lives for a few deliveries. When this returns, the channel is gone and all its
    /// deliveries have ended.
    void Live(PeerProcess& partner, int deliveries, std::chrono::milliseconds patienceWithThem)
    {
        LateCallProbe probe(m_lateCalls, 1);
        auto channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
        channel->SetCallback(LateCallProbe::OnMessage, LateCallProbe::OnNotification, &probe);
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        WaitUntil([&] { return probe.touched >= deliveries; }, patienceWithThem);
        channel.reset();
        probe.gone = true;
        int const touched = probe.touched;
        CatchUp(partner);
        ASSERT_EQ(probe.touched, touched) << "called after the delete had returned";
        ASSERT_GE(touched, deliveries);
        m_deliveries += touched;
    }

    /// Returns when the loop has handled all received messages. The flood waits for a loop that falls behind.
    void CatchUp(PeerProcess& flood)
    {
        auto const isBehind = [this] {
            auto const start = std::chrono::steady_clock::now();
            m_loop.Run([] {});
            return std::chrono::steady_clock::now() - start > 50ms;
        };
        if (isBehind()) {
            flood.Stop();
            while (isBehind()) {
            }
            flood.Continue();
        }
    }

    /// Per second. Tools that check memory or races slow the loop down, and it would fall behind.
    static std::string Rate() { return MemoryCounts() ? "30000" : "500"; }

    void Flood(std::string const& kind)
    {
        PeerProcess flood(
            {"flood", kind, m_other.GetPublicName(), std::string(ChannelObject) + "IPGUTIL", Rate()});
        int round = 0;
        auto const start = std::chrono::steady_clock::now();
        RepeatFor(ShortOrLong(700ms, 20000ms), [&] { Live(flood, ++round % 40, patience); });
        EXPECT_EQ(m_lateCalls, 0);
        EXPECT_GT(m_deliveries, 0);
        Report(flood, start);
    }

    void Report(PeerProcess const& flood, std::chrono::steady_clock::time_point start)
    {
        double const seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        SetRemark(std::to_string(static_cast<long>(static_cast<double>(flood.Sent()) / seconds)) + " of " +
                  Rate() + "/s sent, " + std::to_string(m_deliveries) + " delivered");
    }

    std::atomic<int> m_lateCalls{0};
    int m_deliveries = 0;
    CProxyDBusHelper m_other{"PLAYERCONTROL"}; // keeps the connection
    LoopThread m_loop;
};

TEST_F(FloodFault, F03_ChannelDeletedDuringAFloodOfSignals)
{
    Flood("signals");
}

TEST_F(FloodFault, F03_ChannelDeletedDuringAFloodOfCalls)
{
    Flood("calls");
}

/// The partner's name comes and goes; a handler that has begun is not waited for, but what it uses must live
/// on until the loop's thread is through with it. Losses are too rare to meet a delete at a chosen moment:
/// the tests DestroyedMeanwhile and BlockedHandler do that.
TEST_F(FloodFault, F03_ChannelDeletedDuringAFloodOfNameChanges)
{
    char const* const name = "org.corvel.test.Flood";
    PeerProcess const flood({"flood", "names", name, "/", Rate()});
    int round = 0;
    auto const start = std::chrono::steady_clock::now();
    RepeatFor(ShortOrLong(700ms, 20000ms), [&] {
        LateCallProbe probe(m_lateCalls, 1);
        auto channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
        channel->SetDisconnectNotiCB(LateCallProbe::OnLoss, &probe);
        channel->Connect(name);
        if (++round % 3 == 0) {
            ASSERT_TRUE(WaitUntil([&] { return probe.touched > 0; }, patience));
        }
        channel.reset();
        m_loop.Run([] {}); // a running handler has ended
        probe.gone = true;
        int const touched = probe.touched;
        m_loop.Run([] {});
        ASSERT_EQ(probe.touched, touched) << "called after the delete had returned";
        ASSERT_LE(touched, 1);
        m_deliveries += touched;
    });
    EXPECT_EQ(m_lateCalls, 0);
    Report(flood, start);
}

} // namespace
