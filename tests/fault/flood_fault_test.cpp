#include "FaultTest.h"

#include <atomic>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

/// What a channel's handlers touch. Freed when the channel is gone, so that a memory checker sees a late
/// call; the counter tells without one.
struct Probe
{
    explicit Probe(std::atomic<int>& counter) : lateCalls(counter) {}

    void Touch()
    {
        ++touched;
        std::this_thread::yield(); // so that the channel is often deleted just here
        lateCalls += gone ? 1 : 0;
    }

    std::atomic<bool> gone{false};
    std::atomic<int> touched{0};
    std::atomic<int>& lateCalls;
};

CMessageBuffer OnMessage(CMessageBuffer&, void* probe)
{
    static_cast<Probe*>(probe)->Touch();
    return CMessageBuffer();
}

void OnNotification(CMessageBuffer&, void* probe)
{
    static_cast<Probe*>(probe)->Touch();
}

void OnLoss(std::string, std::string, void* probe)
{
    static_cast<Probe*>(probe)->Touch();
}

/// Channels are made and deleted by one thread while another one delivers 30,000 messages a second to them.
class FloodFault : public FaultTest
{
protected:
    FloodFault() { AllowMemory(16384); } // messages that wait for the loop

    /// A channel that lives for a few deliveries; both are gone, and all that was under way has ended, when
    /// this returns.
    void Live(std::string const& partner, int deliveries, std::chrono::milliseconds patienceWithThem)
    {
        Probe probe(m_lateCalls);
        auto channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
        channel->SetCallback(OnMessage, OnNotification, &probe);
        ASSERT_EQ(channel->Connect(partner), 1);
        WaitUntil([&] { return probe.touched >= deliveries; }, patienceWithThem);
        channel.reset();
        probe.gone = true;
        int const touched = probe.touched;
        m_loop.Run([] {});
        ASSERT_EQ(probe.touched, touched) << "called after the delete had returned";
        ASSERT_GE(touched, deliveries);
        m_deliveries += touched;
    }

    /// A second. What checks memory or races slows the loop down, which would not keep up.
    static std::string Rate() { return MemoryCounts() ? "30000" : "500"; }

    void Flood(std::string const& kind)
    {
        PeerProcess const flood(
            {"flood", kind, m_other.GetPublicName(), std::string(ChannelObject) + "IPGUTIL", Rate()});
        int round = 0;
        auto const start = std::chrono::steady_clock::now();
        RepeatFor(ShortOrLong(700ms, 20000ms), [&] { Live(flood.Name(), ++round % 40, patience); });
        EXPECT_EQ(m_lateCalls, 0);
        EXPECT_GT(m_deliveries, 0);
        Report(flood, start);
    }

    void Report(PeerProcess const& flood, std::chrono::steady_clock::time_point start)
    {
        double const seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        Remark(std::to_string(static_cast<long>(static_cast<double>(flood.Sent()) / seconds)) + "/s sent, " +
               std::to_string(m_deliveries) + " delivered");
    }

    std::atomic<int> m_lateCalls{0};
    int m_deliveries = 0;
    CProxyDBusHelper m_other{"PLAYERCONTROL"}; // keeps the connection
    LoopThread m_loop;
};

TEST_F(FloodFault, F03_ChannelDeletedUnderAFloodOfSignals)
{
    Flood("signals");
}

TEST_F(FloodFault, F03_ChannelDeletedUnderAFloodOfCalls)
{
    Flood("calls");
}

/// The partner's name comes and goes; a handler that has begun is not waited for, but what it uses must live
/// on until the loop's thread is through with it.
TEST_F(FloodFault, F03_ChannelDeletedUnderAFloodOfNameChanges)
{
    char const* const name = "org.corvel.test.Flood";
    PeerProcess const flood({"flood", "names", name, "/", Rate()});
    int round = 0;
    auto const start = std::chrono::steady_clock::now();
    RepeatFor(ShortOrLong(700ms, 20000ms), [&] {
        Probe probe(m_lateCalls);
        auto channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
        channel->SetDisconnectNotiCB(OnLoss, &probe);
        channel->Connect(name);
        if (++round % 3 == 0) {
            ASSERT_TRUE(WaitUntil([&] { return probe.touched > 0; }, patience));
        }
        channel.reset();
        m_loop.Run([] {}); // a handler that had begun has ended
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
