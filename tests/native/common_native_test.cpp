// SPDX-License-Identifier: MIT
#include "EndpointTest.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

using namespace zviptv::test;

namespace {

/// Records incoming messages, and echoes them.
class Recorder : public CCommonNative
{
public:
    Recorder() : CCommonNative("ENDPOINT") {}

    CMessageBuffer t_HandleMessage(CMessageBuffer& msg) override
    {
        CMessageBuffer reply;
        reply.AddValue("echo", msg.GetValue("functionname").c_str());
        reply.SetResult(7);
        return reply;
    }

    void t_HandleNotification(CMessageBuffer& msg) override
    {
        notified.push_back(msg.GetValue("functionname"));
    }

    std::vector<std::string> notified;
};

TEST_F(EndpointTest, HooksAnswerCalls)
{
    Recorder endpoint;
    WireMessage const reply = Call(Target(endpoint, "Send"), Entries({{"functionname", "Ask"}}));
    EXPECT_EQ(reply.kind, WireKind::Reply);
    EXPECT_EQ(reply.entries, Entries({{"echo", "Ask"}, {"result_internal", "7"}}));
    EXPECT_EQ(LinesOf("m_MessageCb"), EntryLine());
    EXPECT_EQ(LinesOf("t_HandleMessage"), Lines());
}

TEST_F(EndpointTest, DefaultHookAnswersWithAnEmptyMessage)
{
    Plain endpoint;
    WireMessage const reply = Call(Target(endpoint, "Send"), Entries({{"functionname", "Ask"}}));
    EXPECT_EQ(reply.kind, WireKind::Reply);
    EXPECT_EQ(reply.signature, "a{sv}");
    EXPECT_TRUE(reply.entries.empty());
    EXPECT_EQ(LinesOf("m_MessageCb"), EntryLine());
    EXPECT_EQ(LinesOf("t_HandleMessage"), EntryLine());
}

TEST_F(EndpointTest, HooksReceiveNotifications)
{
    Recorder endpoint;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    Notify(endpoint, Entries({{"functionname", "First"}}));
    Notify(endpoint, Entries({{"functionname", "Second"}}));
    ASSERT_TRUE(RunUntil([&] { return endpoint.notified.size() == 2; }));
    EXPECT_EQ(endpoint.notified, (std::vector<std::string>{"First", "Second"}));
}

TEST_F(EndpointTest, WritesDefaultHandlerAlsoWhenASubclassHandledIt)
{
    Recorder endpoint;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    for (std::size_t count = 1; count <= 3; ++count) {
        Notify(endpoint, Entries({{"functionname", "Tell"}}));
        ASSERT_TRUE(RunUntil([&] { return m_log.Count("Default handler") == count; }));
        EXPECT_EQ(endpoint.notified.size(), count);
    }
    for (LogLine const& line : m_log.Lines()) {
        if (line.Message() == "Default handler") {
            EXPECT_EQ(line.priority, ZV_LOG_INFO);
            EXPECT_EQ(line.Origin(), "CommonNative.cpp: m_NotificationCb");
        }
    }
    EXPECT_EQ(LinesOf("t_HandleNotification"), Lines());
}

TEST_F(EndpointTest, DefaultNotificationHookOnlyLogs)
{
    Plain endpoint;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    Notify(endpoint, Entries({{"functionname", "Tell"}}));
    ASSERT_TRUE(RunUntil([&] { return m_log.Count("Default handler") == 1; }));
    EXPECT_EQ(LinesOf("t_HandleNotification"), EntryLine());
    std::vector<std::string> origins;
    for (LogLine const& line : m_log.Lines()) {
        origins.push_back(line.Origin());
    }
    ASSERT_GE(origins.size(), 2U);
    EXPECT_EQ(origins.back(), "CommonNative.cpp: m_NotificationCb");
    EXPECT_EQ(origins.at(origins.size() - 2), "CommonNative.cpp: t_HandleNotification");
}

TEST_F(EndpointTest, SendsWithoutWaitingAndKeepsTheReply)
{
    m_partner.SetHandler([](WireMessage const&) {
        return Entries({{"result_internal", "1"}, {"other", "x"}});
    });
    Plain endpoint;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    CMessageBuffer request;
    request.AddValue("functionname", "Do");
    CMessageBuffer reply;
    reply.AddValue("kept", "1");
    EXPECT_TRUE(endpoint.t_SendMessage(request, reply));
    ASSERT_TRUE(m_partner.WaitFor(IsCall("Send")));
    EXPECT_EQ(m_partner.WaitFor(IsCall("Send"))->entries, Entries({{"functionname", "Do"}}));
    ASSERT_TRUE(RunUntil([&] { return m_log.Has(ZV_LOG_INFO, "Replyed"); }));
    EXPECT_EQ(reply.Size(), 1);
    EXPECT_EQ(reply.GetValue("kept"), "1");
    EXPECT_EQ(LinesOf("t_SendMessage"), EntryLine());
}

TEST_F(EndpointTest, SendingSucceedsAlsoWhenThePartnerAnswersWithAnError)
{
    m_partner.SetHandler(
        [](WireMessage const&) { return WireAnswer::Error("org.corvel.test.Failed", "no"); });
    Plain endpoint;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    CMessageBuffer request;
    CMessageBuffer reply;
    EXPECT_TRUE(endpoint.t_SendMessage(request, reply));
    ASSERT_TRUE(RunUntil([&] {
        auto const messages = m_log.Messages(ZV_LOG_DEBUG);
        return std::any_of(messages.begin(), messages.end(),
                           [](std::string const& text) { return text.rfind("Error received: '", 0) == 0; });
    }));
    EXPECT_EQ(reply.Size(), 0);
}

TEST_F(EndpointTest, NotifiesOnlyThePartner)
{
    WirePeer bystander;
    bystander.AddMatch("type='signal',interface='org.corvel.zviptvapi.DbusCommunication'");
    Plain endpoint;
    ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    CMessageBuffer message;
    message.AddValue("functionname", "Tell");
    message.AddValue("blob", 3, "a\0b");
    EXPECT_TRUE(endpoint.t_SendNotication(message));
    auto const signal = m_partner.WaitFor(IsSignal("SendSignal"));
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->entries, Entries({{"functionname", "Tell"}, {"blob", std::string("a\0b", 3)}}));
    EXPECT_EQ(signal->destination, m_partner.Name());
    EXPECT_EQ(signal->path, "/org/corvel/zviptvapi/DbusCommunication/ENDPOINT");
    bystander.Sync();
    EXPECT_EQ(bystander.Received().Count(IsSignal("SendSignal")), 0U);
    EXPECT_EQ(LinesOf("t_SendNotication"), EntryLine());
}

TEST_F(EndpointTest, NothingIsSentBeforeConnect)
{
    Plain endpoint;
    CMessageBuffer request;
    CMessageBuffer reply;
    EXPECT_FALSE(endpoint.t_SendMessage(request, reply));
    EXPECT_FALSE(endpoint.t_SendNotication(request));
    EXPECT_EQ(m_log.Count("Connection not set."), 2U);
}

TEST_F(EndpointTest, ConnectReturnsWhetherItSucceeded)
{
    Plain endpoint;
    m_log.Clear();
    EXPECT_FALSE(endpoint.Connect(""));
    EXPECT_FALSE(endpoint.Connect("no bus name"));
    EXPECT_TRUE(endpoint.Connect(m_partner.Name()));
    EXPECT_EQ(LinesOf("Connect"), Lines());
}

TEST_F(EndpointTest, PublicNameIsTheUniqueBusName)
{
    Plain endpoint;
    std::string const name = endpoint.GetPublicName();
    EXPECT_EQ(name.rfind(':', 0), 0U);
    EXPECT_THAT(m_partner.ListNames(), testing::Contains(name));
    EXPECT_NE(name, m_partner.Name());
    EXPECT_EQ(LinesOf("GetPublicName"), Lines());
}

TEST_F(EndpointTest, ConstructionAndDestructionLogOneLineEach)
{
    {
        Plain const endpoint;
        EXPECT_EQ(LinesOf("CCommonNative"), EntryLine());
        EXPECT_EQ(m_log.Lines().front().Origin(), "CommonNative.cpp: CCommonNative");
        EXPECT_TRUE(m_log.Has(ZV_LOG_INFO, "Constructor - ENDPOINT"));
        m_log.Clear();
    }
    EXPECT_EQ(LinesOf("~CCommonNative"), EntryLine());
    EXPECT_EQ(m_log.Lines().front().Origin(), "CommonNative.cpp: ~CCommonNative");
}

TEST_F(EndpointTest, DoesNotUseTheHelperBus)
{
    WirePeer helper;
    ASSERT_TRUE(helper.OwnName("org.corvel.zviptvapi.dbushelper"));
    {
        Plain endpoint;
        ASSERT_TRUE(endpoint.Connect(m_partner.Name()));
    }
    helper.Sync();
    EXPECT_EQ(helper.Received().Count(IsCall("SendSignal")), 0U);
}

} // namespace
