// SPDX-License-Identifier: MIT
#include "ExpectedLeaks.h"
#include "FaultTest.h"
#include "Thrown.h"

#include <future>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

/// Every handler throws twenty times. Only the memory that GLib holds at that moment leaks.
class ExceptionFault : public PartnerTest
{
protected:
    ExceptionFault() { ExpectLeaks(); }

    /// Kills a partner, and waits for the report of its loss.
    void Lose(TestChannel& channel, int& losses)
    {
        int const before = losses;
        PeerProcess partner;
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        partner.Kill();
        ASSERT_TRUE(RunCounting(m_caught, [&] { return losses > before; }));
        ASSERT_FALSE(channel->IsConnectionReady());
    }

    int m_caught = 0;
    PeerProcess m_partner;
};

TEST_F(ExceptionFault, F10_TwentyOutOfSignalHandlers)
{
    TestChannel channel;
    int signals = 0;
    channel.onNotification = [&](CMessageBuffer&) {
        if (++signals % 2 == 1) {
            throw Thrown();
        }
    };
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    Repeat(Throws, [&] {
        int const before = m_caught;
        OrderEvents(channel, "SendSignal", {{"count", "2"}});
        ASSERT_TRUE(RunCounting(m_caught, [&] { return signals % 2 == 0 && m_caught == before + 1; }));
    });
    EXPECT_EQ(signals, 2 * m_caught);
}

TEST_F(ExceptionFault, F10_TwentyOutOfCallHandlers)
{
    TestChannel channel;
    int calls = 0;
    channel.onMessage = [&](CMessageBuffer&) {
        if (++calls % 2 == 1) {
            throw Thrown();
        }
        return CMessageBuffer();
    };
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    Repeat(Throws, [&] {
        int const before = m_caught;
        OrderEvents(channel, "Send", {});
        OrderEvents(channel, "Send", {});
        ASSERT_TRUE(RunCounting(m_caught, [&] { return calls % 2 == 0 && m_caught == before + 1; }));
    });
    EXPECT_EQ(calls, 2 * m_caught);
}

/// The only code of the application that runs in a completion is its log sink.
TEST_F(ExceptionFault, F10_TwentyOutOfAsyncCompletions)
{
    static int replies = 0;
    TestChannel channel;
    ASSERT_EQ(channel->Connect(m_partner.Name()), 1);
    RunPending();
    ZVSetLogSink(
        [](EZVLogPriority, char const*, char const* line, void*) {
            if (std::string(line).find("m_GAsyncMessageCallback") != std::string::npos &&
                std::string(line).find("Replyed") != std::string::npos && ++replies % 2 == 1) {
                throw Thrown();
            }
        },
        nullptr);
    Repeat(Throws, [&] {
        int const before = m_caught;
        ASSERT_EQ(Order(channel, {{"id", "1"}}, 1), 1);
        ASSERT_EQ(Order(channel, {{"id", "2"}}, 1), 1);
        ASSERT_TRUE(RunCounting(m_caught, [&] { return replies % 2 == 0 && m_caught == before + 1; }));
    });
    ZVSetLogSink(nullptr, nullptr);
    EXPECT_EQ(replies, 2 * m_caught);
}

TEST_F(ExceptionFault, F10_TwentyOutOfDisconnectHandlers)
{
    TestChannel channel;
    int losses = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) {
        if (++losses % 2 == 1) {
            throw Thrown();
        }
    };
    Repeat(Throws, [&] {
        Lose(channel, losses);
        Lose(channel, losses); // forever, if the lock were still held
        ASSERT_EQ(losses, 2 * m_caught);
    });
}

} // namespace
