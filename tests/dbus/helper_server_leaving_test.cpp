// SPDX-License-Identifier: MIT
#include "GLibObjects.h"
#include "HelperFixture.h"

#include <atomic>
#include <future>

using namespace zviptv::test;
using testing::ElementsAre;

namespace {

/// A server whose handler runs until the test releases it, while another thread destroys the server.
class HelperServerLeaving : public LoopedChannelTest
{
protected:
    HelperServerLeaving()
    {
        Server().SetDbusSignalCb(Run, this);
        EXPECT_TRUE(m_partner.WaitForOwner(HelperName, true));
        m_partner.CallWithoutReply(HelperTarget(), WirePairs());
        m_entered.get_future().wait();
        m_log.Clear();
        m_destroyed = std::async(std::launch::async, [this] {
            CConnectionHelperDBusServer::Destroy();
            EXPECT_TRUE(m_hasLeft) << "Destroy waits for the handler";
        });
        EXPECT_TRUE(m_partner.WaitForOwner(HelperName, false));
    }

    static CConnectionHelperDBusServer& Server() { return *CConnectionHelperDBusServer::Instance(); }

    static std::string Run(std::string, std::string, std::string, void* data)
    {
        auto& self = *static_cast<HelperServerLeaving*>(data);
        self.m_entered.set_value();
        self.m_leave.get_future().wait();
        if (self.m_atTheEnd) {
            self.m_atTheEnd();
        }
        self.m_hasLeft = true;
        return std::string();
    }

    void Release()
    {
        m_leave.set_value();
        m_destroyed.get();
    }

    void ExpectAlive()
    {
        EXPECT_TRUE(m_partner.WaitForOwner(HelperName, true));
        EXPECT_EQ(m_partner.Call(HelperTarget(), WirePairs()).Value("dbusname"), ":1.42");
    }

    TestChannel m_other; // keeps the connection
    Handled m_handled;
    ServerEnd m_end;
    std::promise<void> m_entered;
    std::promise<void> m_leave;
    std::function<void()> m_atTheEnd;
    std::atomic<bool> m_hasLeft{false};
    std::future<void> m_destroyed;
};

TEST_F(HelperServerLeaving, CreateOnAnotherThreadMakesALiveServer)
{
    Server().SetDbusSignalCb(Handled::Handle, &m_handled);
    Release();
    ExpectAlive();
}

TEST_F(HelperServerLeaving, CreateInsideTheHandlerMakesALiveServer)
{
    m_atTheEnd = [this] { Server().SetDbusSignalCb(Handled::Handle, &m_handled); };
    Release();
    ExpectAlive();
}

TEST_F(HelperServerLeaving, HandlersOfADestroyedServerAreRefused)
{
    Release();
    CConnectionHelperDBusServer& server = Server();
    CConnectionHelperDBusServer::Destroy();
    m_log.Clear();
    server.SetDbusSignalCb(Handled::Handle, &m_handled);
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Failed("SetDbusSignalCb", "The object has been destroyed; create it again")));
    Server();
    EXPECT_TRUE(m_partner.WaitForOwner(HelperName, true));
    EXPECT_EQ(m_partner.Call(HelperTarget(), WirePairs()).Value("dbusname"), "");
    EXPECT_EQ(m_handled.announced.size(), 0U);
}

/// A server that is replaced after the end of its bus while it handles an announcement.
class HelperServerReplaced : public LoopedChannelTest
{
protected:
    static constexpr char Callback[] = "ConnectionHelperDBusServer.cpp: m_MethodCallback";

    static CConnectionHelperDBusServer& Server() { return *CConnectionHelperDBusServer::Instance(); }

    /// When this returns, the announcement has begun, but the server has not looked up its handler.
    void HoldAnnouncement()
    {
        Server().SetDbusSignalCb(Handled::Handle, &m_handled);
        EXPECT_TRUE(m_partner.WaitForOwner(HelperName, true));
        m_log.HoldAt(Callback);
        m_partner.CallWithoutReply(HelperTarget(), WirePairs());
        EXPECT_TRUE(m_log.WaitUntilHeld());
        m_log.HoldAtNext(Callback);
        EXPECT_TRUE(m_log.WaitUntilHeld());
    }

    /// Overwrites freed memory of this thread.
    static void OverwriteFreedMemory()
    {
        std::vector<std::string> blocks;
        for (std::size_t size = 32; size <= 1024; size += 16) {
            blocks.emplace_back(size, '\x5a');
        }
    }

    ConnectionPtr m_connection = SharedConnection();
    Handled m_handled;
    ServerEnd m_end;
};

TEST_F(HelperServerReplaced, TheAnnouncementReachesItsServer)
{
    HoldAnnouncement();
    m_bus.Restart();
    Server();
    OverwriteFreedMemory();
    m_log.Release();
    m_loop.Run([] {});
    EXPECT_EQ(m_handled.announced.size(), 1U);
}

TEST_F(HelperServerReplaced, DestroyWaitsForItsHandler)
{
    HoldAnnouncement();
    m_bus.Restart();
    Server();
    std::atomic<bool> isReleased{false};
    auto const destroyed = std::async(std::launch::async, [&] {
        CConnectionHelperDBusServer::Destroy();
        EXPECT_TRUE(isReleased);
    });
    EXPECT_EQ(destroyed.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    isReleased = true;
    m_log.Release();
    destroyed.wait();
    EXPECT_EQ(m_handled.announced.size(), 1U);
}

TEST_F(HelperServerReplaced, TheNextOneHasItsHandler)
{
    Server().SetDbusSignalCb(Handled::Handle, &m_handled);
    m_bus.Restart();
    WirePeer partner;
    Server();
    EXPECT_TRUE(partner.WaitForOwner(HelperName, true));
    EXPECT_EQ(partner.Call(HelperTarget(), WirePairs()).Value("dbusname"), m_handled.answer);
}

} // namespace
