// SPDX-License-Identifier: MIT
#include "FaultTest.h"

using namespace zviptv::test;

namespace {

/// Everybody may do everything, except send unrequested replies, which every bus refuses.
BusOptions OpenBus()
{
    BusOptions options;
    options.openPolicy = false;
    options.extraConfig = R"(<policy context="default">
        <allow user="*"/><allow own="*"/><allow send_destination="*"/><allow receive_sender="*"/>
        </policy>)";
    return options;
}

class StrangerFault : public PartnerTest
{
protected:
    StrangerFault() : PartnerTest(OpenBus()) {}
};

/// A third process on an open bus pretends to be the partner or the bus, or sends in its own name.
TEST_F(StrangerFault, F11_StrangersSignalsCallsAndForgeries)
{
    PeerProcess partner;
    TestChannel channel;
    std::vector<std::string> callers;
    int signals = 0;
    int losses = 0;
    channel.onNotification = [&](CMessageBuffer&) { ++signals; };
    channel.onMessage = [&](CMessageBuffer&) {
        callers.push_back(CProxyDBusHelper::GetSenderName());
        return CMessageBuffer();
    };
    channel.onDisconnect = [&](std::string const&, std::string const&) { ++losses; };
    ASSERT_EQ(channel->Connect(partner.Name()), 1);
    Repeat(ShortOrLong(1, 40), [&] {
        callers.clear();
        signals = 0;
        PeerProcess const stranger(
            {"stranger", channel->GetPublicName(), channel.Target("Send").path, partner.Name()});
        ASSERT_TRUE(stranger.WaitForDone());
        ASSERT_EQ(Ask(channel, {{"id", "mine"}}).GetValue("id"), "mine");
        OrderEvents(channel, "SendSignal", {{"count", "1"}}); // arrives after all messages of the stranger
        ASSERT_TRUE(RunUntil([&] { return signals > 0 && !callers.empty(); }));
        RunPending();
        ASSERT_EQ(signals, 1) << "the partner's own";
        ASSERT_EQ(callers, std::vector<std::string>{stranger.Name()}) << "not the name that it had written";
        ASSERT_EQ(losses, 0) << "a forged notice counts";
        ASSERT_TRUE(channel->IsConnectionReady());
    });
}

} // namespace
