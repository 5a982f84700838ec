// SPDX-License-Identifier: MIT
#include "ChannelFixture.h"

#include <filesystem>
#include <fstream>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

constexpr char EndpointName[] = "org.corvel.test.Endpoint";

/// A bus that would start a service for the endpoint's name. That service creates a file, and never takes the
/// name.
class NoAutoStart : public testing::Test
{
protected:
    NoAutoStart()
        : m_services([] {
              char path[] = "/tmp/zviptv-services-XXXXXX";
              return std::string(mkdtemp(path));
          }())
    {
        std::ofstream(m_services + "/endpoint.service")
            << "[D-BUS Service]\nName=" << EndpointName << "\nExec=/usr/bin/touch " << Mark() << "\n";
        BusOptions options;
        options.extraConfig = "<servicedir>" + m_services + "</servicedir>";
        m_bus = std::make_unique<PrivateBus>(options);
        m_observer = std::make_unique<WirePeer>();
    }
    ~NoAutoStart() override { std::filesystem::remove_all(m_services); }

    std::string Mark() const { return m_services + "/started"; }
    bool IsStarted() const { return std::filesystem::exists(Mark()); }

    std::string const m_services;
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<WirePeer> m_observer;
};

TEST_F(NoAutoStart, TheBusStartsNoEndpoint)
{
    CProxyDBusHelper channel("IPGUTIL");
    auto const start = std::chrono::steady_clock::now();
    channel.Connect(EndpointName);
    CMessageBuffer message = Message({{"k", "v"}});
    CMessageBuffer reply;
    EXPECT_EQ(channel.SendMessage(message, reply, 0), 0);
    channel.SendMessage(message, reply, 1);
    channel.SendNotification(message);
    m_observer->CallWithoutReply(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1900ms);
    // When the bus answers the connection again, it has handled all messages of the channel.
    CProxyDBusHelper other("PLAYERCONTROL");
    other.Connect(m_observer->Name());
    other.SendMessage(message, reply, 0);
    EXPECT_FALSE(WaitUntil([this] { return IsStarted(); }, 300ms));
}

/// The bus of this test does start services, so that the tests above would detect a start.
TEST_F(NoAutoStart, TheBusStartsItForACall)
{
    m_observer->CallWithoutReply({EndpointName, "/x", "x.y", "Z"});
    EXPECT_TRUE(WaitUntil([this] { return IsStarted(); }, patience));
}

TEST_F(NoAutoStart, AnEndpointWithAnOwnerIsReached)
{
    ASSERT_TRUE(m_observer->OwnName(EndpointName));
    m_observer->SetHandler([](WireMessage const&) { return WireAnswer(Entries({{"said", "yes"}})); });
    CProxyDBusHelper channel("IPGUTIL");
    ASSERT_EQ(channel.Connect(EndpointName), 1);
    CMessageBuffer message = Message({{"k", "v"}});
    CMessageBuffer reply;
    EXPECT_EQ(channel.SendMessage(message, reply, 0), 1);
    EXPECT_EQ(channel.SendNotification(message), 1);
    EXPECT_TRUE(m_observer->WaitFor(IsSignal("SendSignal")));
}

} // namespace
