#include "FakeService.h"
#include "PrivateBus.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

class FakeServiceTest : public testing::Test
{
protected:
    PrivateBus m_bus;
    FakeService m_service;
    WirePeer m_client;

    WireMessage Announce(WirePairs const& pairs)
    {
        return m_client.Call({"org.corvel.zviptvapi.dbushelper", "/org/corvel/zviptvapi/dbushelper",
                              "org.corvel.zviptvapi.dbushelper", "SendSignal"},
                             pairs);
    }

    WireMessage Request(std::string const& function, CallOptions const& options = {})
    {
        return m_client.Call({m_service.Name(), "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL",
                              "org.corvel.zviptvapi.DbusCommunication", "Send"},
                             Entries({{"functionname", function}, {"handleID", "256"}}), options);
    }
};

} // namespace

TEST_F(FakeServiceTest, OwnsTheHelperName)
{
    EXPECT_EQ(m_service.Name(), m_client.GetNameOwner("org.corvel.zviptvapi.dbushelper"));
    EXPECT_THROW(FakeService(), std::runtime_error);
}

TEST_F(FakeServiceTest, AnswersAnnouncementsWithItsOwnNameAndRecordsThem)
{
    auto const reply = Announce(Pairs({{"dbusname", ":1.9"}, {"type", "IPGUTIL"}, {"add", "y"}}));
    EXPECT_EQ("a(ss)", reply.signature);
    EXPECT_EQ(Pairs({{"dbusname", m_service.Name()}}), reply.pairs);
    auto const seen = m_service.WaitForAnnouncement("IPGUTIL", "y");
    ASSERT_TRUE(seen);
    EXPECT_EQ(":1.9", seen->dbusname);
    EXPECT_EQ(m_client.Name(), seen->message.sender);
    EXPECT_EQ(":1.9", m_service.ClientOf("IPGUTIL"));
    EXPECT_EQ("", m_service.ClientOf("PLAYERCONTROL"));
    EXPECT_FALSE(m_service.WaitForAnnouncement("IPGUTIL", "n", 10ms));
    EXPECT_EQ(1U, m_service.Announcements().size());
}

TEST_F(FakeServiceTest, AnnouncementAnswersAreScriptable)
{
    m_service.SetPartnerName(":1.77");
    EXPECT_EQ(":1.77", Announce({}).Value("dbusname"));
    m_service.AnswerAnnouncements([](Announcement const& announcement) {
        return Pairs({{"dbusname", "for." + announcement.type}});
    });
    EXPECT_EQ("for.IPGUTIL", Announce(Pairs({{"type", "IPGUTIL"}})).Value("dbusname"));
}

TEST_F(FakeServiceTest, RequestsGetTheDefaultOrTheirOwnAnswer)
{
    EXPECT_EQ(Entries({{"result_internal", "1"}}), Request("Anything").entries);
    m_service.Answer("GetSTCCount", {{"result_internal", "1"}, {"stc", "4711"}});
    EXPECT_EQ(Entries({{"result_internal", "1"}, {"stc", "4711"}}), Request("GetSTCCount").entries);
    m_service.AnswerByDefault(Entries({{"result_internal", "0"}}));
    EXPECT_EQ("0", Request("Anything").Value("result_internal"));
}

TEST_F(FakeServiceTest, OtherKindsOfAnswers)
{
    m_service.AnswerNothing("Silent");
    EXPECT_EQ("org.freedesktop.DBus.Error.NoReply", Request("Silent", {30ms, false}).errorName);
    m_service.AnswerError("Failing");
    EXPECT_EQ("org.corvel.test.Failed", Request("Failing").errorName);
    m_service.AnswerWith("Odd", WireBody::Strings({"not a dictionary"}));
    EXPECT_EQ("s", Request("Odd").signature);
    m_service.AnswerWith("Late", WireAnswer(Entries({{"k", "v"}})).After(30ms));
    EXPECT_EQ("v", Request("Late").Value("k"));
    m_service.AnswerBy("Echo", [](WireMessage const& request) { return request.entries; });
    EXPECT_EQ("256", Request("Echo").Value("handleID"));
}

TEST_F(FakeServiceTest, RecordsRequestsInOrder)
{
    EXPECT_THROW(m_service.LastRequest(), std::logic_error);
    Request("First");
    Request("Second");
    ASSERT_EQ(2U, m_service.Requests().size());
    EXPECT_EQ("First", m_service.Requests().front().Value("functionname"));
    EXPECT_EQ("Second", m_service.LastRequest().Value("functionname"));
    EXPECT_EQ("/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL", m_service.LastRequest().path);
    EXPECT_TRUE(m_service.WaitForRequest("First"));
    EXPECT_FALSE(m_service.WaitForRequest("Third", 10ms));
    m_service.ClearRecords();
    EXPECT_TRUE(m_service.Requests().empty());
}

TEST_F(FakeServiceTest, RejectsWhatIsNotOfTheProtocol)
{
    auto const wrongMember =
        m_client.Call({m_service.Name(), "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL",
                       "org.corvel.zviptvapi.DbusCommunication", "SendSignal"},
                      WireEntries());
    EXPECT_EQ("org.freedesktop.DBus.Error.UnknownMethod", wrongMember.errorName);
    auto const wrongBody =
        m_client.Call({m_service.Name(), "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL",
                       "org.corvel.zviptvapi.DbusCommunication", "Send"},
                      Pairs({{"functionname", "MuteAudio"}}));
    EXPECT_EQ("org.freedesktop.DBus.Error.InvalidArgs", wrongBody.errorName);
    EXPECT_TRUE(m_service.Requests().empty());
}

TEST_F(FakeServiceTest, NotifiesAndCallsTheClient)
{
    m_client.SetHandler([](WireMessage const&) { return Entries({{"from", "client"}}); });
    m_service.Notify(m_client.Name(), "IPTVDATASUBSCRIBER", Entries({{"functionname", "PESCB"}}));
    auto const signal = m_client.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(signal);
    EXPECT_EQ("/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER", signal->path);
    EXPECT_EQ("org.corvel.zviptvapi.DbusCommunication", signal->interface);
    EXPECT_EQ(m_service.Name(), signal->sender);
    EXPECT_EQ(m_client.Name(), signal->destination);
    EXPECT_EQ("a{sv}", signal->signature);
    EXPECT_EQ("client", m_service.CallClient(m_client.Name(), "IPGUTIL", WireEntries()).Value("from"));
    EXPECT_THROW(m_service.Notify("", "IPGUTIL", {}), std::invalid_argument);
}

TEST_F(FakeServiceTest, VanishesAndCanBeReplaced)
{
    m_service.Vanish();
    EXPECT_TRUE(m_client.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    FakeService successor(m_bus.Address());
    EXPECT_EQ(Pairs({{"dbusname", successor.Name()}}), Announce({}).pairs);
}
