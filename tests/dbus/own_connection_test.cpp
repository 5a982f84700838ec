// SPDX-License-Identifier: MIT
#include "GLibObjects.h"
#include "HelperFixture.h"

#include <zviptv/Failure.h>

#include <chrono>
#include <climits>
#include <future>

using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::HasSubstr;
using zviptv::Owned;

namespace {

Owned<GDBusConnection> NewConnection(std::string const& address)
{
    auto const flags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                         G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    return Owned<GDBusConnection>(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, nullptr));
}

/// The arguments of a completion of SendAsync.
struct Answered
{
    static void Complete(CMessageBuffer* reply, void* data)
    {
        auto& self = *static_cast<Answered*>(data);
        ++self.count;
        self.kind = ZVGetLastFailure().kind;
        self.function = ZVGetLastFailure().function;
        self.message = ZVGetLastFailure().message;
        if (reply != nullptr) {
            self.entries = EntriesOf(*reply);
        }
    }

    int count = 0;
    EZVFailureKind kind = ZV_FAILURE_NONE;
    std::string function;
    std::string message;
    std::optional<WireEntries> entries;
};

/// A channel on a connection of the test, with a partner.
class OwnConnection : public ChannelTest
{
protected:
    OwnConnection() { EXPECT_EQ(m_channel.Connect(m_partner.Name()), 1); }

    int Send(CMessageBuffer request, int timeoutMs = 2000, GCancellable* cancellable = nullptr)
    {
        return m_channel.SendAsync(request, timeoutMs, cancellable, Answered::Complete, &m_answered);
    }
    bool AwaitAnswer()
    {
        return RunUntil([&] { return m_answered.count > 0; });
    }

    Owned<GDBusConnection> m_connection = NewConnection(m_bus.Address());
    CProxyDBusHelper m_channel{"PLAYERCONTROL", m_connection.get()};
    Answered m_answered;
};

TEST_F(OwnConnection, TheChannelUsesTheGivenConnection)
{
    EXPECT_EQ(m_channel.GetPublicName(), g_dbus_connection_get_unique_name(m_connection.get()));
    EXPECT_NE(m_channel.GetPublicName(), g_dbus_connection_get_unique_name(SharedConnection().get()));
    auto answer = std::async(std::launch::async, [this] {
        return m_partner.Call({m_channel.GetPublicName(), std::string(ChannelObject) + "PLAYERCONTROL",
                               ChannelInterface, "Send"},
                              Entries({{"a", "1"}}));
    });
    RunUntil([&] { return answer.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
    EXPECT_EQ(answer.get().kind, WireKind::Reply);
}

TEST_F(OwnConnection, TwoConnectionsMayHaveChannelsOfOneName)
{
    CProxyDBusHelper shared("PLAYERCONTROL");
    EXPECT_FALSE(m_log.Has(ZV_LOG_ERROR, "Error while registering object"));
    EXPECT_NE(shared.GetPublicName(), m_channel.GetPublicName());
}

TEST_F(OwnConnection, ANullConnectionFailsWithNoBus)
{
    CProxyDBusHelper channel("PLAYERCONTROL", nullptr);
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NO_BUS);
    EXPECT_EQ(channel.GetPublicName(), "");
    EXPECT_EQ(channel.Connect(m_partner.Name()), 0);
    CMessageBuffer request;
    EXPECT_EQ(channel.SendAsync(request, -1, nullptr, Answered::Complete, &m_answered), 0);
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NO_BUS);
    CConnectionHelperDBusClient client(nullptr);
    EXPECT_EQ(client.Connect(":1.7", "PLAYERCONTROL"), "");
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NO_BUS);
}

TEST_F(OwnConnection, SendAsyncCallsSendAndPassesTheReply)
{
    m_partner.SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}, {"b", "x"}}); });
    EXPECT_EQ(Send(Message({{"functionname", "MuteAudio"}, {"e", ""}})), 1);
    EXPECT_EQ(m_answered.count, 0) << "never inside the call";
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_answered.entries, Entries({{"result_internal", "1"}, {"b", "x"}}));
    EXPECT_EQ(m_answered.kind, ZV_FAILURE_NONE);
    auto const call = m_partner.WaitFor(IsCall("Send"));
    ASSERT_TRUE(call);
    EXPECT_EQ(call->path, "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL");
    EXPECT_EQ(call->interface, "org.corvel.zviptvapi.DbusCommunication");
    EXPECT_EQ(call->entries, Entries({{"functionname", "MuteAudio"}, {"e", ""}}));
}

TEST_F(OwnConnection, AnErrorIsTheFailureWhileTheCompletionRuns)
{
    m_partner.SetHandler(
        [](WireMessage const&) { return WireAnswer::Error("org.corvel.Failed", "because"); });
    EXPECT_EQ(Send(CMessageBuffer()), 1);
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_answered.entries, std::nullopt);
    EXPECT_EQ(m_answered.kind, ZV_FAILURE_BUS_ERROR);
    EXPECT_EQ(m_answered.function, "SendAsync");
    EXPECT_EQ(m_answered.message, "because");
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NONE) << "what the caller had";
}

TEST_F(OwnConnection, AReplyOfAnotherTypeIsMalformed)
{
    m_partner.SetHandler([](WireMessage const&) { return WireBody::Strings({"a"}); });
    EXPECT_EQ(Send(CMessageBuffer()), 1);
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_answered.kind, ZV_FAILURE_MALFORMED_REPLY);
}

TEST_F(OwnConnection, UsesTheTimeoutOfTheCall)
{
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    EXPECT_EQ(Send(CMessageBuffer(), 50), 1);
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_answered.kind, ZV_FAILURE_TIMED_OUT);
    EXPECT_THAT(m_answered.message, HasSubstr("within 50 ms"));
}

TEST_F(OwnConnection, ACancelledSendHasNoFailure)
{
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    Owned<GCancellable> const cancellable(g_cancellable_new());
    EXPECT_EQ(Send(CMessageBuffer(), INT_MAX, cancellable.get()), 1);
    ASSERT_TRUE(m_partner.WaitFor(IsCall("Send")));
    g_cancellable_cancel(cancellable.get());
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_answered.entries, std::nullopt);
    EXPECT_EQ(m_answered.kind, ZV_FAILURE_NONE);
}

TEST_F(OwnConnection, ASendThatFailsAtOnceHasNoCompletion)
{
    EXPECT_EQ(Send(Message({{"\xff", "1"}})), 0);
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_INVALID_ARGUMENT);
    CProxyDBusHelper unconnected("IPGUTIL", m_connection.get());
    CMessageBuffer request;
    EXPECT_EQ(unconnected.SendAsync(request, -1, nullptr, Answered::Complete, &m_answered), 0);
    EXPECT_EQ(ZVGetLastFailure().kind, ZV_FAILURE_NO_SERVICE);
    EXPECT_EQ(m_channel.SendAsync(request, -1, nullptr, Answered::Complete, &m_answered), 1);
    ASSERT_TRUE(AwaitAnswer());
    RunPending();
    EXPECT_EQ(m_answered.count, 1);
}

TEST_F(OwnConnection, TheCompletionRunsAfterTheChannelHasEnded)
{
    auto channel = std::make_unique<CProxyDBusHelper>("IPGUTIL", m_connection.get());
    EXPECT_EQ(channel->Connect(m_partner.Name()), 1);
    CMessageBuffer request;
    EXPECT_EQ(channel->SendAsync(request, 2000, nullptr, Answered::Complete, &m_answered), 1);
    channel.reset();
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_answered.count, 1);
}

/// The arguments of a completion of ConnectAsync.
struct Announced
{
    static void Complete(std::string const& partner, void* data)
    {
        auto& self = *static_cast<Announced*>(data);
        self.partner = partner;
        self.kind = ZVGetLastFailure().kind;
    }

    std::optional<std::string> partner;
    EZVFailureKind kind = ZV_FAILURE_NONE;
};

/// An announcement on a connection of the test.
class OwnAnnouncement : public ChannelTest
{
protected:
    bool Announce(GCancellable* cancellable = nullptr, std::string const& name = ":1.7")
    {
        CConnectionHelperDBusClient client(m_connection.get());
        return client.ConnectAsync(name, "BROADCASTDATA", cancellable, Announced::Complete, &m_announced);
    }
    bool AwaitAnswer()
    {
        return RunUntil([&] { return m_announced.partner.has_value(); });
    }

    Owned<GDBusConnection> m_connection = NewConnection(m_bus.Address());
    Announced m_announced;
};

TEST_F(OwnAnnouncement, ConnectAsyncAnnouncesOnTheGivenConnection)
{
    m_partner.OwnName(HelperName);
    m_partner.SetHandler([](WireMessage const&) { return Pairs({{"dbusname", ":1.42"}}); });
    ASSERT_TRUE(Announce());
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_announced.partner, ":1.42");
    auto const call = m_partner.WaitFor(IsCall("SendSignal"));
    ASSERT_TRUE(call);
    EXPECT_EQ(call->sender, g_dbus_connection_get_unique_name(m_connection.get()));
    EXPECT_TRUE(call->noAutoStart);
    EXPECT_EQ(call->pairs, (WirePairs{{"dbusname", ":1.7"}, {"type", "BROADCASTDATA"}, {"add", "y"}}));
}

TEST_F(OwnAnnouncement, ConnectAsyncReportsWhyThereIsNoName)
{
    ASSERT_TRUE(Announce());
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_announced.partner, "");
    EXPECT_EQ(m_announced.kind, ZV_FAILURE_NO_SERVICE);
    m_partner.OwnName(HelperName);
    m_partner.SetHandler([](WireMessage const&) { return WireBody::Strings({"a"}); });
    m_announced = {};
    ASSERT_TRUE(Announce());
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_announced.partner, "");
    EXPECT_EQ(m_announced.kind, ZV_FAILURE_MALFORMED_REPLY);
    EXPECT_FALSE(Announce(nullptr, "\xff")) << "not UTF-8";
}

TEST_F(OwnAnnouncement, ACancelledAnnouncementHasNoFailure)
{
    m_partner.OwnName(HelperName);
    m_partner.SetHandler([](WireMessage const&) { return WireAnswer::Nothing(); });
    Owned<GCancellable> const cancellable(g_cancellable_new());
    ASSERT_TRUE(Announce(cancellable.get()));
    g_cancellable_cancel(cancellable.get());
    ASSERT_TRUE(AwaitAnswer());
    EXPECT_EQ(m_announced.kind, ZV_FAILURE_NONE);
}

} // namespace
