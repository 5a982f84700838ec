// SPDX-License-Identifier: MIT
#include "FakeService.h"
#include "PolicyBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::IsEmpty;
using testing::StartsWith;

namespace zviptv::test {

namespace {

constexpr char const* HelperPath = "/org/corvel/zviptvapi/dbushelper";
constexpr char const* AccessDenied = "org.freedesktop.DBus.Error.AccessDenied";

/// The service owns its name. Every account has a separate connection.
class PolicyTest : public testing::Test
{
protected:
    void SetUp() override
    {
        if (auto const reason = ReasonToSkip(); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        m_bus = std::make_unique<PolicyBus>();
        m_service = m_bus->Connect(service);
        m_service->SetHandler([](WireMessage const&) {
            return WireAnswer(WireEntries{{"said", "ay", "yes"}});
        });
        ASSERT_TRUE(m_service->OwnName(HelperName));
    }

    std::unique_ptr<WirePeer> Connect(Account const& account) const { return m_bus->Connect(account); }

    /// The name of the error; "" for a call that was answered.
    static std::string Call(WirePeer& from, std::string const& to, char const* path, char const* interface,
                            char const* member)
    {
        return from.Call({to, path, interface, member}).errorName;
    }

    static std::string Announce(WirePeer& from)
    {
        return Call(from, HelperName, HelperPath, HelperName, "SendSignal");
    }

    std::string Request(WirePeer& from) const
    {
        return Call(from, m_service->Name(), PlayerChannelPath, ChannelInterface, "Send");
    }

    static std::string CallChannel(WirePeer& from, WirePeer& to)
    {
        to.SetHandler([](WireMessage const&) { return WireAnswer(WireEntries{}); });
        return Call(from, to.Name(), PlayerChannelPath, ChannelInterface, "Send");
    }

    /// Whether the signal arrives. A later signal of the service shows that it will not.
    bool Notifies(WirePeer& from, WirePeer& to, char const* interface = ChannelInterface) const
    {
        from.Emit({to.Name(), PlayerChannelPath, interface, "SendSignal"});
        from.Sync();
        m_service->Emit({to.Name(), PlayerChannelPath, ChannelInterface, "Last"});
        EXPECT_TRUE(to.WaitFor(IsSignal("Last"))) << "the service's own signal was not delivered";
        return to.Received().Count(IsSignal("SendSignal")) == 1;
    }

    static std::string Own(WirePeer& peer)
    {
        return peer
            .Call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName"},
                  WireBody::Raw([](DBusMessageIter* body) {
                      dbus_uint32_t const doNotQueue = 4;
                      dbus_message_iter_append_basic(body, DBUS_TYPE_STRING, &HelperName);
                      dbus_message_iter_append_basic(body, DBUS_TYPE_UINT32, &doNotQueue);
                  }))
            .errorName;
    }

    std::unique_ptr<PolicyBus> m_bus;
    std::unique_ptr<WirePeer> m_service;
};

} // namespace

TEST_F(PolicyTest, RootMayNotOwnTheName)
{
    EXPECT_EQ(Own(*Connect(root)), AccessDenied);
}

TEST_F(PolicyTest, AnApplicationMayNotOwnTheName)
{
    EXPECT_EQ(Own(*Connect(application)), AccessDenied);
}

TEST_F(PolicyTest, AStrangerMayNotOwnTheName)
{
    EXPECT_EQ(Own(*Connect(stranger)), AccessDenied);
}

TEST_F(PolicyTest, TheServiceMayOwnTheNameAgain)
{
    m_service.reset();
    EXPECT_THAT(Own(*Connect(service)), IsEmpty());
}

TEST_F(PolicyTest, AnApplicationMayAnnounceItself)
{
    EXPECT_THAT(Announce(*Connect(application)), IsEmpty());
}

TEST_F(PolicyTest, ASecondApplicationMayAnnounceItself)
{
    EXPECT_THAT(Announce(*Connect(SecondApplication)), IsEmpty());
}

TEST_F(PolicyTest, RootMayAnnounceItself)
{
    EXPECT_THAT(Announce(*Connect(root)), IsEmpty());
}

TEST_F(PolicyTest, AStrangerMayNotAnnounceItself)
{
    EXPECT_EQ(Announce(*Connect(stranger)), AccessDenied);
}

TEST_F(PolicyTest, AnApplicationMayCallTheServiceByItsUniqueName)
{
    EXPECT_THAT(m_service->Name(), StartsWith(":"));
    EXPECT_THAT(Request(*Connect(application)), IsEmpty());
}

TEST_F(PolicyTest, ASecondApplicationMayCallTheServiceByItsUniqueName)
{
    EXPECT_THAT(Request(*Connect(SecondApplication)), IsEmpty());
}

TEST_F(PolicyTest, RootMayCallTheServiceByItsUniqueName)
{
    EXPECT_THAT(Request(*Connect(root)), IsEmpty());
}

TEST_F(PolicyTest, AStrangerMayNotCallTheService)
{
    EXPECT_EQ(Request(*Connect(stranger)), AccessDenied);
}

TEST_F(PolicyTest, NobodyMayCallAnotherConnectionOfTheServicesUser)
{
    auto const other = Connect(service);
    EXPECT_EQ(CallChannel(*Connect(application), *other), AccessDenied);
}

TEST_F(PolicyTest, AConnectionThatLostTheNameCannotBeCalled)
{
    auto const client = Connect(application);
    ASSERT_THAT(Request(*client), IsEmpty());
    ASSERT_TRUE(m_service->ReleaseName(HelperName));
    EXPECT_EQ(Request(*client), AccessDenied);
}

TEST_F(PolicyTest, TheServiceMayNotifyAnApplication)
{
    EXPECT_TRUE(Notifies(*m_service, *Connect(application)));
}

TEST_F(PolicyTest, TheServiceMayNotifyRoot)
{
    EXPECT_TRUE(Notifies(*m_service, *Connect(root)));
}

TEST_F(PolicyTest, TheServiceMayCallAnApplicationsChannel)
{
    EXPECT_THAT(CallChannel(*m_service, *Connect(application)), IsEmpty());
}

TEST_F(PolicyTest, TheServiceMayNotCallOtherObjectsOfAnApplication)
{
    auto const client = Connect(application);
    EXPECT_EQ(Call(*m_service, client->Name(), "/", "org.example.Private", "Open"), AccessDenied);
}

TEST_F(PolicyTest, AStrangerMayNotNotifyAnApplication)
{
    EXPECT_FALSE(Notifies(*Connect(stranger), *Connect(application)));
}

TEST_F(PolicyTest, AnApplicationMayNotNotifyAnother)
{
    EXPECT_FALSE(Notifies(*Connect(SecondApplication), *Connect(application)));
}

TEST_F(PolicyTest, RootMayNotNotifyAnApplication)
{
    EXPECT_FALSE(Notifies(*Connect(root), *Connect(application)));
}

TEST_F(PolicyTest, AStrangerMayNotCallAnApplicationsChannel)
{
    EXPECT_EQ(CallChannel(*Connect(stranger), *Connect(application)), AccessDenied);
}

TEST_F(PolicyTest, AnApplicationMayNotCallAnothersChannel)
{
    EXPECT_EQ(CallChannel(*Connect(SecondApplication), *Connect(application)), AccessDenied);
}

TEST_F(PolicyTest, AStrangerMayNotNotifyTheService)
{
    auto const marker = Connect(service);
    Connect(stranger)->Emit({m_service->Name(), PlayerChannelPath, ChannelInterface, "SendSignal"});
    marker->Emit({m_service->Name(), PlayerChannelPath, ChannelInterface, "Last"});
    ASSERT_TRUE(m_service->WaitFor(IsSignal("Last")));
    EXPECT_EQ(m_service->Received().Count(IsSignal("SendSignal")), 0u);
}

TEST_F(PolicyTest, SignalsOfOtherInterfacesAreAllowed)
{
    EXPECT_TRUE(Notifies(*Connect(stranger), *Connect(application), "org.example.Elsewhere"));
}

} // namespace zviptv::test
