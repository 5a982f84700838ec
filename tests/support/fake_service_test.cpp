// SPDX-License-Identifier: MIT
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
    EXPECT_EQ(m_client.GetNameOwner("org.corvel.zviptvapi.dbushelper"), m_service.Name());
    EXPECT_THROW(FakeService(), std::runtime_error);
}

TEST_F(FakeServiceTest, AnswersAnnouncementsWithItsNameAndRecordsThem)
{
    auto const reply = Announce(Pairs({{"dbusname", ":1.9"}, {"type", "IPGUTIL"}, {"add", "y"}}));
    EXPECT_EQ(reply.signature, "a(ss)");
    EXPECT_EQ(reply.pairs, Pairs({{"dbusname", m_service.Name()}}));
    auto const seen = m_service.WaitForAnnouncement("IPGUTIL", "y");
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->dbusname, ":1.9");
    EXPECT_EQ(seen->message.sender, m_client.Name());
    EXPECT_EQ(m_service.ClientOf("IPGUTIL"), ":1.9");
    EXPECT_EQ(m_service.ClientOf("PLAYERCONTROL"), "");
    EXPECT_FALSE(m_service.WaitForAnnouncement("IPGUTIL", "n", 10ms));
    EXPECT_EQ(m_service.Announcements().size(), 1U);
}

TEST_F(FakeServiceTest, AnnouncementAnswersAreScriptable)
{
    m_service.SetPartnerName(":1.77");
    EXPECT_EQ(Announce({}).Value("dbusname"), ":1.77");
    m_service.AnswerAnnouncements([](Announcement const& announcement) {
        return Pairs({{"dbusname", "for." + announcement.type}});
    });
    EXPECT_EQ(Announce(Pairs({{"type", "IPGUTIL"}})).Value("dbusname"), "for.IPGUTIL");
}

TEST_F(FakeServiceTest, RequestsGetTheDefaultOrASpecificAnswer)
{
    EXPECT_EQ(Request("Anything").entries, Entries({{"result_internal", "1"}}));
    m_service.Answer("GetSTCCount", {{"result_internal", "1"}, {"stc", "4711"}});
    EXPECT_EQ(Request("GetSTCCount").entries, Entries({{"result_internal", "1"}, {"stc", "4711"}}));
    m_service.AnswerByDefault(Entries({{"result_internal", "0"}}));
    EXPECT_EQ(Request("Anything").Value("result_internal"), "0");
}

TEST_F(FakeServiceTest, SupportsOtherKindsOfAnswers)
{
    m_service.AnswerNothing("Silent");
    EXPECT_EQ(Request("Silent", {30ms, false}).errorName, "org.freedesktop.DBus.Error.NoReply");
    m_service.AnswerError("Failing");
    EXPECT_EQ(Request("Failing").errorName, "org.corvel.test.Failed");
    m_service.AnswerWith("Odd", WireBody::Strings({"not a dictionary"}));
    EXPECT_EQ(Request("Odd").signature, "s");
    m_service.AnswerWith("Late", WireAnswer(Entries({{"k", "v"}})).After(30ms));
    EXPECT_EQ(Request("Late").Value("k"), "v");
    m_service.AnswerBy("Echo", [](WireMessage const& request) { return request.entries; });
    EXPECT_EQ(Request("Echo").Value("handleID"), "256");
}

TEST_F(FakeServiceTest, RecordsRequestsInOrder)
{
    EXPECT_THROW(m_service.LastRequest(), std::logic_error);
    Request("First");
    Request("Second");
    ASSERT_EQ(m_service.Requests().size(), 2U);
    EXPECT_EQ(m_service.Requests().front().Value("functionname"), "First");
    EXPECT_EQ(m_service.LastRequest().Value("functionname"), "Second");
    EXPECT_EQ(m_service.LastRequest().path, "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL");
    EXPECT_TRUE(m_service.WaitForRequest("First"));
    EXPECT_FALSE(m_service.WaitForRequest("Third", 10ms));
    m_service.ClearRecords();
    EXPECT_TRUE(m_service.Requests().empty());
}

TEST_F(FakeServiceTest, RejectsMessagesOutsideTheProtocol)
{
    auto const wrongMember =
        m_client.Call({m_service.Name(), "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL",
                       "org.corvel.zviptvapi.DbusCommunication", "SendSignal"},
                      WireEntries());
    EXPECT_EQ(wrongMember.errorName, "org.freedesktop.DBus.Error.UnknownMethod");
    auto const wrongBody =
        m_client.Call({m_service.Name(), "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL",
                       "org.corvel.zviptvapi.DbusCommunication", "Send"},
                      Pairs({{"functionname", "MuteAudio"}}));
    EXPECT_EQ(wrongBody.errorName, "org.freedesktop.DBus.Error.InvalidArgs");
    EXPECT_TRUE(m_service.Requests().empty());
}

TEST_F(FakeServiceTest, NotifiesAndCallsTheClient)
{
    m_client.SetHandler([](WireMessage const&) { return Entries({{"from", "client"}}); });
    m_service.Notify(m_client.Name(), "IPTVDATASUBSCRIBER", Entries({{"functionname", "PESCB"}}));
    auto const signal = m_client.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->path, "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER");
    EXPECT_EQ(signal->interface, "org.corvel.zviptvapi.DbusCommunication");
    EXPECT_EQ(signal->sender, m_service.Name());
    EXPECT_EQ(signal->destination, m_client.Name());
    EXPECT_EQ(signal->signature, "a{sv}");
    EXPECT_EQ(m_service.CallClient(m_client.Name(), "IPGUTIL", WireEntries()).Value("from"), "client");
    EXPECT_THROW(m_service.Notify("", "IPGUTIL", {}), std::invalid_argument);
}

TEST_F(FakeServiceTest, VanishesAndCanBeReplaced)
{
    m_service.Vanish();
    EXPECT_TRUE(m_client.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    FakeService successor(m_bus.Address());
    EXPECT_EQ(Announce({}).pairs, Pairs({{"dbusname", successor.Name()}}));
}
