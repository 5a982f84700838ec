// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>

using namespace zviptv::test;

namespace {

/// The partner goes while Connect runs on another thread than the one that iterates the context.
class LostWhileConnecting : public LoopedChannelTest
{
protected:
    LostWhileConnecting()
    {
        auto const count = [](std::string, std::string, void* losses) {
            ++*static_cast<std::atomic<int>*>(losses);
        };
        m_channel->SetDisconnectNotiCB(count, &m_losses);
    }

    std::atomic<int> m_losses{0};
    std::unique_ptr<CProxyDBusHelper> m_channel = std::make_unique<CProxyDBusHelper>("IPGUTIL");
};

/// At its first log line, Connect has not requested the watch yet; at its last one, only the last step is
/// left.
TEST_F(LostWhileConnecting, IsNotReady)
{
    WirePeer next;
    next.SetHandler([](WireMessage const&) { return Entries({{"k", "v"}}); });
    auto const isLastLine = [this] {
        return m_log.Has(ZV_LOG_INFO, "Subscribe for signals from " + m_partner.Name() +
                                          " on object /org/corvel/zviptvapi/DbusCommunication/IPGUTIL.");
    };
    m_log.HoldAt("ProxyDBusHelper.cpp: m_CreatePartnerProxy");
    auto connected = std::async(std::launch::async, [this] { return m_channel->Connect(m_partner.Name()); });
    ASSERT_TRUE(m_log.WaitUntilHeld());
    while (!isLastLine()) {
        m_log.HoldAtNext("ProxyDBusHelper.cpp: m_CreatePartnerProxy");
        ASSERT_TRUE(m_log.WaitUntilHeld());
    }
    m_partner.Disconnect();
    ASSERT_TRUE(WaitUntil([this] { return m_losses == 1; }, patience));
    m_log.Release();
    EXPECT_EQ(connected.get(), 0);
    EXPECT_FALSE(m_channel->IsConnectionReady());
    CMessageBuffer message;
    CMessageBuffer reply;
    EXPECT_EQ(m_channel->SendMessage(message, reply, 0), 0);
    EXPECT_EQ(m_channel->Connect(next.Name()), 1);
    EXPECT_EQ(m_channel->SendMessage(message, reply, 0), 1);
    EXPECT_EQ(reply.GetValue("k"), "v");
    EXPECT_EQ(m_losses, 1);
}

/// A folder of services that the bus may start. A started service leaves a mark and never takes its name.
class ActivatableService
{
public:
    ActivatableService() : m_folder(testing::TempDir() + "zviptv-activatable-" + std::to_string(getpid()))
    {
        std::filesystem::create_directories(m_folder);
        std::ofstream(m_folder + "/org.corvel.test.Activatable.service")
            << "[D-BUS Service]\nName=org.corvel.test.Activatable\nUser=root\nExec=/usr/bin/touch " << Mark()
            << "\n";
    }
    ~ActivatableService() { std::filesystem::remove_all(m_folder); }
    ActivatableService(ActivatableService const&) = delete;
    ActivatableService& operator=(ActivatableService const&) = delete;

    BusOptions Options() const
    {
        BusOptions options;
        options.extraConfig = "<servicedir>" + m_folder + "</servicedir>";
        return options;
    }
    bool WasStarted() const { return std::filesystem::exists(Mark()); }

private:
    std::string Mark() const { return m_folder + "/started"; }

    std::string m_folder;
};

TEST(ActivatablePartner, IsNotStarted)
{
    ActivatableService const service;
    PrivateBus const bus(service.Options());
    LogCapture log;
    WirePeer peer;
    ASSERT_EQ(peer.Call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                         "ListActivatableNames"})
                  .kind,
              WireKind::Reply);
    CProxyDBusHelper channel("IPGUTIL");
    channel.Connect("org.corvel.test.Activatable");
    CMessageBuffer message;
    CMessageBuffer reply;
    EXPECT_EQ(channel.SendMessage(message, reply, 0), 0);
    EXPECT_TRUE(RunUntil([&] {
        return log.Has(ZV_LOG_ERROR, "Connection lost with partner id=org.corvel.test.Activatable");
    }));
    EXPECT_FALSE(service.WasStarted());
}

} // namespace
