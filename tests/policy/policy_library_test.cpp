// SPDX-License-Identifier: MIT
#include "Bytes.h"
#include "LoopRunner.h"
#include "PolicyBus.h"

#include <zviptv/ProxyDBusHelper.h>

#include <gtest/gtest.h>

namespace zviptv::test {

namespace {

/// The messages that an application's channel received, and their senders.
struct Received
{
    static CMessageBuffer OnMessage(CMessageBuffer& /*request*/, void* self)
    {
        static_cast<Received*>(self)->callers.push_back(CProxyDBusHelper::GetSenderName());
        return CMessageBuffer();
    }
    static void OnNotification(CMessageBuffer& /*notification*/, void* self)
    {
        static_cast<Received*>(self)->notifiers.push_back(CProxyDBusHelper::GetSenderName());
    }
    static void OnLoss(std::string /*partner*/, std::string /*own*/, void* self)
    {
        ++static_cast<Received*>(self)->losses;
    }

    std::vector<std::string> callers;
    std::vector<std::string> notifiers;
    int losses = 0;
};

/// Another user tries what only the service may do.
void Spoof(WirePeer& peer, WireTarget target, WireTarget busNotice, std::string const& partner)
{
    target.member = "SendSignal";
    peer.Emit(target);
    peer.Emit(busNotice, WireBody::Strings({partner, partner, ""}));
    target.member = "Send";
    EXPECT_EQ(peer.Call(target).errorName, "org.freedesktop.DBus.Error.AccessDenied");
    peer.Sync();
}

} // namespace

TEST(PolicyLibraryTest, AnApplicationReceivesOnlyFromTheService)
{
    if (auto const reason = ReasonToSkip(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    PolicyBus const bus;
    auto const partner = bus.Connect(service);
    partner->SetHandler([](WireMessage const&) { return WireAnswer(Entries({{"said", "yes"}})); });
    ASSERT_TRUE(partner->OwnName("org.corvel.zviptvapi.dbushelper"));

    Received received;
    std::unique_ptr<CProxyDBusHelper> channel;
    PolicyBus::As(application, [&] { channel = std::make_unique<CProxyDBusHelper>("PLAYERCONTROL"); });
    channel->SetCallback(Received::OnMessage, Received::OnNotification, &received);
    channel->SetDisconnectNotiCB(Received::OnLoss, &received);
    ASSERT_EQ(channel->Connect(partner->Name()), 1);
    CMessageBuffer request;
    CMessageBuffer reply;
    EXPECT_EQ(channel->SendMessage(request, reply, 0), 1);
    EXPECT_EQ(reply.GetValue("said"), "yes");

    std::string const own = channel->GetPublicName();
    WireTarget const target{own, PlayerChannelPath, ChannelInterface, "SendSignal"};
    for (Account const& account : {stranger, SecondApplication, root}) {
        Spoof(*bus.Connect(account), target,
              {own, "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged"}, partner->Name());
    }
    partner->CallWithoutReply({own, PlayerChannelPath, ChannelInterface, "Send"}, WireEntries());
    partner->Emit(target, WireEntries());
    ASSERT_TRUE(RunUntil([&] { return !received.callers.empty() && !received.notifiers.empty(); }));
    RunPending();
    EXPECT_EQ(received.callers, std::vector<std::string>{partner->Name()});
    EXPECT_EQ(received.notifiers, std::vector<std::string>{partner->Name()});
    EXPECT_EQ(received.losses, 0);
}

} // namespace zviptv::test
