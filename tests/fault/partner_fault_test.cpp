// SPDX-License-Identifier: MIT
#include "FaultTest.h"

#include <algorithm>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

using Clock = std::chrono::steady_clock;

class PartnerFault : public PartnerTest
{
protected:
    static constexpr int Calls = 20;
    static constexpr int Signals = 10;

    /// Makes calls that the partner receives and does not answer, after signals that it sends.
    static void StartUnansweredCalls(TestChannel& channel)
    {
        OrderEvents(channel, "SendSignal", {{"count", std::to_string(Signals)}});
        for (int i = 0; i < Calls; ++i) {
            ASSERT_EQ(Order(channel, {{"do", "nothing"}}, 1), 1);
        }
        ASSERT_EQ(Ask(channel, {{"id", "got"}}).GetValue("id"), "got");
    }

    /// How many asynchronous calls have ended with an error.
    static std::size_t ErrorsIn(LogCapture const& log)
    {
        auto const messages = log.Messages(ZV_LOG_DEBUG);
        return static_cast<std::size_t>(
            std::count_if(messages.begin(), messages.end(), [](std::string const& message) {
                return message.find("Error received: ") == 0 &&
                       message.find(".NoReply: ") != std::string::npos;
            }));
    }
};

TEST_F(PartnerFault, F01_PartnerKilledWithAsyncCallsOutstanding)
{
    Repeat(ShortOrLong(5, 200), [] {
        LogCapture log;
        PeerProcess partner;
        TestChannel channel;
        int signals = 0;
        int signalsAtLoss = -1;
        std::size_t errorsAtLoss = 0;
        channel.onNotification = [&](CMessageBuffer&) { ++signals; };
        channel.onDisconnect = [&](std::string const&, std::string const&) {
            ASSERT_EQ(signalsAtLoss, -1) << "lost twice";
            signalsAtLoss = signals;
            errorsAtLoss = ErrorsIn(log);
        };
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        StartUnansweredCalls(channel);
        partner.Kill();
        ASSERT_TRUE(RunUntil([&] { return ErrorsIn(log) == Calls; }));
        RunPending();
        ASSERT_EQ(signalsAtLoss, Signals);
        ASSERT_EQ(errorsAtLoss, 0U);
        ASSERT_EQ(signals, Signals);
        ASSERT_FALSE(channel->IsConnectionReady());
    });
}

TEST_F(PartnerFault, F02_DisconnectHandlerDeletesItsOwner)
{
    Repeat(ShortOrLong(5, 200), [] {
        LogCapture log;
        PeerProcess partner;
        auto owner = std::make_unique<TestChannel>();
        std::string lost;
        std::pair<std::unique_ptr<TestChannel>&, std::string&> both(owner, lost);
        auto const handler = [](std::string name, std::string, void* data) {
            auto& [channel, told] = *static_cast<decltype(both)*>(data);
            channel.reset(); // with the channel's mutex held, and calls outstanding
            told = std::move(name);
        };
        (*owner)->SetDisconnectNotiCB(handler, &both);
        ASSERT_EQ((*owner)->Connect(partner.Name()), 1);
        StartUnansweredCalls(*owner);
        partner.Kill();
        ASSERT_TRUE(RunUntil([&] { return ErrorsIn(log) == Calls; }));
        RunPending();
        ASSERT_EQ(owner, nullptr);
        ASSERT_EQ(lost, partner.Name());
    });
}

TEST_F(PartnerFault, F05_PartnerDiesDuringASyncCall)
{
    Repeat(ShortOrLong(5, 200), [] {
        PeerProcess partner;
        TestChannel channel;
        int losses = 0;
        channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
        ASSERT_EQ(channel->Connect(partner.Name()), 1);
        RunPending();
        auto const start = Clock::now();
        ASSERT_EQ(Order(channel, {{"do", "die"}}), 0);
        ASSERT_LT(Clock::now() - start, 1900ms) << "the call waited for its timeout";
        ASSERT_EQ(losses, 0) << "reported although nobody iterates the context";
        ASSERT_TRUE(RunUntil([&] { return losses > 0; }));
        RunPending();
        ASSERT_EQ(losses, 1);
    });
}

TEST_F(PartnerFault, F06_PartnerStopped)
{
    PeerProcess partner;
    TestChannel channel;
    int losses = 0;
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    ASSERT_EQ(channel->Connect(partner.Name()), 1);
    auto longest = Clock::duration::zero();
    Repeat(ShortOrLong(1, 20), [&] {
        partner.Stop();
        CMessageBuffer request = Message({{"id", "late"}});
        CMessageBuffer reply = Message({{"id", "former"}});
        auto const start = Clock::now();
        ASSERT_EQ(channel->SendMessage(request, reply, 0), 0);
        auto const waited = Clock::now() - start;
        longest = std::max(longest, waited);
        ASSERT_GE(waited, 1990ms);
        ASSERT_LT(waited, 4000ms);
        ASSERT_EQ(reply.GetValue("id"), "former");
        partner.Continue();
        ASSERT_EQ(Ask(channel, {{"id", "next"}}).GetValue("id"), "next");
        RunPending();
    });
    EXPECT_EQ(losses, 0);
    SetRemark("at most " +
              std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(longest).count()) + " ms");
}

} // namespace
