// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "ProxyTest.h"

#include <zviptv/ProxyDBusHelper.h>

#include <gmock/gmock.h>

#include <algorithm>

using namespace zviptv::test;

namespace {

using FactoryWithoutService = ProxyTest;

TEST_F(FactoryWithoutService, ProgramGuideIsCreatedNevertheless)
{
    m_log.Clear();
    IIPGUtil* const guide = CreateGuide();
    ASSERT_NE(guide, nullptr);
    EXPECT_EQ(CreateGuide(), guide);
    EXPECT_FALSE(m_log.Has(ZV_LOG_ERROR, "iptv-serivce did not launched"));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "partner's name: "));
    EXPECT_TRUE(m_log.Has(ZV_LOG_ERROR, "G_DBUS_ERROR_NAME_HAS_NO_OWNER"));
    std::string genre = "untouched";
    EXPECT_FALSE(guide->GetGenre(1, genre));
    EXPECT_EQ(genre, "untouched");
}

TEST_F(FactoryWithoutService, ProgramGuideFailsUntilItIsRecreated)
{
    IIPGUtil* guide = CreateGuide();
    FakeService service;
    service.Answer("GetGenre", {{"data", "film"}});
    std::string genre;
    EXPECT_FALSE(guide->GetGenre(1, genre));
    CIPTVServiceAPI::DestroyIPGUtil();
    guide = CreateGuide();
    EXPECT_TRUE(guide->GetGenre(1, genre));
    EXPECT_EQ(genre, "film");
    CIPTVServiceAPI::DestroyIPGUtil();
}

TEST_F(FactoryWithoutService, ServesBothSidesInOneProcess)
{
    LoopThread const loop;
    IConnectionHelper* helper = nullptr;
    EXPECT_EQ(CIPTVServiceAPI::CreateConnectionHelper(&helper), 0);
    ASSERT_NE(helper, nullptr);
    WirePeer partner;
    partner.SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}}); });
    helper->SetDbusSignalCb(
        [](std::string, std::string type, std::string, void* peer) {
            return type == "PLAYERCONTROL" ? static_cast<WirePeer*>(peer)->Name() : std::string();
        },
        &partner);
    ASSERT_TRUE(partner.WaitForOwner("org.corvel.zviptvapi.dbushelper", true));
    IPlayerControl* const player = CreatePlayer();
    ASSERT_NE(player, nullptr);
    EXPECT_TRUE(player->MuteVideo(true));
    DestroyAll();
    EXPECT_EQ(CIPTVServiceAPI::DestroyConnectionHelper(), 0);
    EXPECT_EQ(CIPTVServiceAPI::DestroyConnectionHelper(), 0);
    EXPECT_TRUE(partner.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
}

using Factory = ServiceTest;

TEST_F(Factory, CreatesNothingWithoutAnOutputPointer)
{
    EXPECT_EQ(CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, nullptr), 0);
    EXPECT_EQ(CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, nullptr), 0);
    EXPECT_EQ(CIPTVServiceAPI::CreateIPTVDataSubscriber(IPTV_PROFILE_DEFAULT, 0, nullptr), 0);
    EXPECT_EQ(CIPTVServiceAPI::CreateIPGUtil(nullptr), 0);
    EXPECT_EQ(CIPTVServiceAPI::CreateConnectionHelper(nullptr), 0);
    EXPECT_TRUE(m_service.Announcements().empty());
}

TEST_F(Factory, EachClassHasItsOwnHandle)
{
    IPlayerControl& player = *CreatePlayer(1);
    IBroadcastData& broadcast = *CreateBroadcast(2);
    CreateSubscriber(3);
    EXPECT_TRUE(player.MuteAudio(true));
    EXPECT_EQ(m_service.LastRequest().Value("handleID"), "257");
    EXPECT_TRUE(broadcast.UnMuteByRatingPin());
    EXPECT_EQ(m_service.LastRequest().Value("handleID"), "258");
    EXPECT_TRUE(player.MuteAudio(true));
    EXPECT_EQ(m_service.LastRequest().Value("handleID"), "257");
}

/// The calls of the library on the bus, "member argument", in order, without Hello.
class LibraryCalls
{
public:
    LibraryCalls(PrivateBus const& bus, FakeService& service)
        : m_monitor(bus.Address(), {"type='method_call'"}), m_service(service), m_connection("FENCE")
    {
        m_connection.Connect(m_service.Name());
        Take();
    }

    /// All calls since the last time.
    std::vector<std::string> Take()
    {
        CMessageBuffer fence; // arrives after all earlier messages
        fence.AddValue("functionname", "fence");
        EXPECT_EQ(m_connection.SendMessage(fence, fence, 0), 1);
        auto const isFence = [](WireMessage const& message) {
            return message.Value("functionname") == "fence";
        };
        EXPECT_TRUE(m_monitor.WaitFor(isFence));
        std::vector<std::string> calls;
        for (WireMessage const& message : m_monitor.Seen().All()) {
            if (message.sender != m_service.Name() && message.member != "Hello" && !isFence(message)) {
                calls.push_back(message.member + " " + Argument(message));
            }
        }
        m_monitor.Seen().Clear();
        return calls;
    }

private:
    static std::string Argument(WireMessage const& message)
    {
        if (!message.strings.empty()) {
            return message.strings.front();
        }
        return message.Has("add") ? message.Value("type") + " " + message.Value("add")
                                  : message.Value("functionname");
    }

    BusMonitor m_monitor;
    FakeService& m_service;
    CProxyDBusHelper m_connection;
};

std::string const Owner = "org.corvel.zviptvapi.dbushelper";

std::string SignalRule(std::string const& partner, std::string const& type)
{
    return "type='signal',sender='" + partner +
           "',interface='org.corvel.zviptvapi.DbusCommunication',"
           "path='/org/corvel/zviptvapi/DbusCommunication/" +
           type + "'";
}

std::vector<std::string> Only(std::vector<std::string> const& calls, std::vector<std::string> const& wanted)
{
    std::vector<std::string> found;
    for (std::string const& call : calls) {
        if (std::find(wanted.begin(), wanted.end(), call) != wanted.end()) {
            found.push_back(call);
        }
    }
    return found;
}

TEST_F(Factory, CallsTheBusInOrder)
{
    LibraryCalls calls(m_bus, m_service);
    std::string const added = "AddMatch " + SignalRule(m_service.Name(), "PLAYERCONTROL");
    std::string const removed = "RemoveMatch " + SignalRule(m_service.Name(), "PLAYERCONTROL");
    std::vector<std::string> const all{"NameHasOwner " + Owner, "SendSignal PLAYERCONTROL y", added,
                                       "Send MuteAudio",        "SendSignal PLAYERCONTROL n", removed};
    IPlayerControl& player = *CreatePlayer();
    EXPECT_EQ(Only(calls.Take(), all), (std::vector<std::string>{all[0], all[1], all[2]}));
    CreatePlayer(7);
    EXPECT_EQ(calls.Take(), std::vector<std::string>());
    player.MuteAudio(true);
    EXPECT_EQ(calls.Take(), std::vector<std::string>{all[3]});
    CIPTVServiceAPI::DestroyPlayerControl();
    std::vector<std::string> const last = calls.Take();
    ASSERT_FALSE(last.empty());
    EXPECT_EQ(last.front(), all[4]);
    EXPECT_EQ(Only(last, all), (std::vector<std::string>{all[4], all[5]}));
    CIPTVServiceAPI::DestroyPlayerControl();
    EXPECT_EQ(calls.Take(), std::vector<std::string>());
}

TEST_F(Factory, ProgramGuideDoesNotAskWhetherTheServiceRuns)
{
    LibraryCalls calls(m_bus, m_service);
    ASSERT_NE(CreateGuide(), nullptr);
    std::vector<std::string> const made = calls.Take();
    ASSERT_FALSE(made.empty());
    EXPECT_EQ(made.front(), "SendSignal IPGUTIL y");
    EXPECT_THAT(made, testing::Not(testing::Contains("NameHasOwner " + Owner)));
}

} // namespace
