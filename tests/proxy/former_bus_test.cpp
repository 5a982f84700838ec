// SPDX-License-Identifier: MIT
#include "ProxyTest.h"

#include <gio/gio.h>

#include <memory>

using namespace zviptv::test;

namespace {

/// Objects of a bus that has died and is there again.
class FormerBus : public ProxyTest
{
protected:
    FormerBus() : m_service(std::make_unique<FakeService>())
    {
        GDBusConnection* const shared = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr);
        g_dbus_connection_set_exit_on_close(shared, FALSE);
        CreateGuide();
        CreateSubscriber();
        g_object_unref(shared);
    }

    void RestartBusAndService()
    {
        m_service.reset();
        m_bus.Restart();
        m_service = std::make_unique<FakeService>();
    }

    std::unique_ptr<FakeService> m_service;
};

TEST_F(FormerBus, ObjectsAnnounceNoDepartureOnALaterBus)
{
    RestartBusAndService();
    DestroyAll();
    CreatePlayer();
    ASSERT_TRUE(m_service->WaitForAnnouncement("PLAYERCONTROL", "y"));
    EXPECT_EQ(m_service->Announcements().size(), 1U) << "only the new object's";
}

TEST_F(FormerBus, CreateReplacesThemThoughNobodyDestroyedThem)
{
    RestartBusAndService();
    std::string genre;
    EXPECT_FALSE(CreateGuide() == nullptr);
    EXPECT_TRUE(CreateGuide()->GetGenre(1, genre));
    CreateSubscriber();
    EXPECT_TRUE(m_service->WaitForAnnouncement("IPTVDATASUBSCRIBER", "y"));
    EXPECT_EQ(m_service->Announcements().size(), 2U) << "each once, and no departure";
}

} // namespace
