// SPDX-License-Identifier: MIT
#include "BusMonitor.h"
#include "HelperFixture.h"

#include <thread>

using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

/// The test's partner is the server.
class HelperClient : public ChannelTest
{
protected:
    HelperClient()
    {
        EXPECT_TRUE(m_partner.OwnName(HelperName));
        AnswerWith(Pairs({{"dbusname", ":1.42"}}));
    }

    void AnswerWith(WireAnswer const& answer)
    {
        m_partner.SetHandler([answer](WireMessage const&) { return answer; });
    }
};

TEST_F(HelperClient, ConstantsMatchTheProtocol)
{
    EXPECT_STREQ(CConnectionHelperDBusClient::BUSNAME, "org.corvel.zviptvapi.dbushelper");
    EXPECT_STREQ(CConnectionHelperDBusClient::METHOD, "SendSignal");
    static_assert(std::has_virtual_destructor_v<CConnectionHelperDBusClient>);
}

TEST_F(HelperClient, ConnectAnnouncesAndReturnsTheName)
{
    BusMonitor monitor(m_bus.Address());
    CConnectionHelperDBusClient client;
    EXPECT_EQ(client.Connect(":1.7", "IPTVDATASUBSCRIBER"), ":1.42");
    auto const seen = monitor.WaitFor(IsCall("SendSignal"));
    ASSERT_TRUE(seen);
    WireMessage expected;
    expected.kind = WireKind::Call;
    expected.sender = seen->sender;
    expected.destination = "org.corvel.zviptvapi.dbushelper";
    expected.path = "/org/corvel/zviptvapi/dbushelper";
    expected.interface = "org.corvel.zviptvapi.dbushelper";
    expected.member = "SendSignal";
    expected.signature = "a(ss)";
    expected.noAutoStart = true;
    expected.pairs = {{"dbusname", ":1.7"}, {"type", "IPTVDATASUBSCRIBER"}, {"add", "y"}};
    EXPECT_EQ(*seen, expected);
    EXPECT_THAT(seen->sender, StartsWith(":"));
}

TEST_F(HelperClient, DisconnectAnnouncesTheDeparture)
{
    CConnectionHelperDBusClient client;
    client.Disconnect(":1.7", "IPGUTIL");
    EXPECT_EQ(m_partner.WaitFor(IsCall("SendSignal"))->pairs,
              Pairs({{"dbusname", ":1.7"}, {"type", "IPGUTIL"}, {"add", "n"}}));
}

TEST_F(HelperClient, LogsEachStep)
{
    {
        CConnectionHelperDBusClient client;
        client.Connect(":1.7", "IPGUTIL");
        client.Disconnect(":1.7", "IPGUTIL");
    }
    EXPECT_THAT(LoggedLines(m_log),
                ElementsAre(Info("CConnectionHelperDBusClient", "ctor"), Info("m_SendMessage", "Sending"),
                            Info("m_SendMessage", "SendDone"), Info("m_SendMessage", "Sending"),
                            Info("m_SendMessage", "SendDone"), Info("~CConnectionHelperDBusClient", "dtor")));
    EXPECT_THAT(m_log.Lines()[0].line,
                StartsWith("ConnectionHelperDBusClient.cpp: CConnectionHelperDBusClient("));
}

TEST_F(HelperClient, EmptyAndMissingNamesAreEmpty)
{
    CConnectionHelperDBusClient client;
    for (WirePairs const& pairs : {Pairs({{"dbusname", ""}}), WirePairs(), Pairs({{"name", ":1.42"}})}) {
        AnswerWith(pairs);
        EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), "");
    }
    EXPECT_EQ(m_log.Count("SendDone"), 3U);
}

TEST_F(HelperClient, TheFirstOfSeveralNamesIsUsed)
{
    AnswerWith(Pairs({{"other", "x"}, {"dbusname", ":1.8"}, {"dbusname", ":1.9"}}));
    CConnectionHelperDBusClient client;
    EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), ":1.8");
}

TEST_F(HelperClient, ValuesAreCutAtTheirFirstZeroByte)
{
    CConnectionHelperDBusClient client;
    client.Connect(std::string(":1.7\0junk", 9), std::string("IPG\0UTIL", 8));
    EXPECT_EQ(m_partner.WaitFor(IsCall("SendSignal"))->pairs,
              Pairs({{"dbusname", ":1.7"}, {"type", "IPG"}, {"add", "y"}}));
    m_partner.Received().Clear();
    CMessageBuffer request = Message({{"blob", std::string("a\0\xff", 3)}, {"blob", std::string("\0", 1)}});
    CMessageBuffer reply;
    EXPECT_TRUE(client.m_SendMessage(request, reply));
    EXPECT_EQ(m_partner.WaitFor(IsCall("SendSignal"))->pairs, Pairs({{"blob", "a"}, {"blob", ""}}));
}

TEST_F(HelperClient, RefusesTextThatIsNotUtf8)
{
    CConnectionHelperDBusClient client;
    EXPECT_EQ(client.Connect("\xff", "IPGUTIL"), "");
    client.Disconnect(":1.7", "\xfe");
    EXPECT_EQ(m_log.Messages(ZV_LOG_ERROR).size(), 2U);
    EXPECT_THAT(m_log.Messages(ZV_LOG_ERROR), testing::Each(StartsWith("Error : ")));
    EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), ":1.42") << "the connection is open";
}

TEST_F(HelperClient, RefusesAnAnnouncementTooLargeForTheBus)
{
    CConnectionHelperDBusClient client;
    EXPECT_EQ(client.Connect(std::string(33 * 1024 * 1024, 'x'), "IPGUTIL"), "");
    EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), ":1.42") << "the connection is open";
}

TEST_F(HelperClient, SendReplacesTheReply)
{
    AnswerWith(Pairs({{"a", "1"}, {"empty", ""}, {"a", "2"}}));
    CConnectionHelperDBusClient client;
    CMessageBuffer request;
    CMessageBuffer reply = Message({{"old", "1"}});
    EXPECT_TRUE(client.m_SendMessage(request, reply));
    EXPECT_EQ(EntriesOf(reply), Entries({{"a", "1"}, {"empty", ""}, {"a", "2"}}));
    EXPECT_EQ(m_partner.WaitFor(IsCall("SendSignal"))->signature, "a(ss)")
        << "an empty buffer is an empty array";
}

TEST_F(HelperClient, AnAnswerOfAnotherTypeIsEmpty)
{
    CConnectionHelperDBusClient client;
    for (WireBody const& body :
         {WireBody(), WireBody::Strings({"a"}), WireBody(Entries({{"dbusname", "x"}}))}) {
        AnswerWith(body);
        EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), "");
    }
}

TEST_F(HelperClient, NeedsNoLoopAndWorksOnAnyThread)
{
    std::string name;
    std::thread([&] {
        CConnectionHelperDBusClient client;
        name = client.Connect(":1.7", "IPGUTIL");
    }).join();
    EXPECT_EQ(name, ":1.42");
}

TEST_F(LoopedChannelTest, ClientAndServerCommunicate)
{
    ServerEnd const end;
    Handled handled;
    CConnectionHelperDBusServer::Instance()->SetDbusSignalCb(Handled::Handle, &handled);
    ASSERT_TRUE(m_partner.WaitForOwner(HelperName, true));
    CConnectionHelperDBusClient client;
    EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), ":1.42");
    handled.answer.clear();
    EXPECT_EQ(client.Connect(":1.7", "IPGUTIL"), "");
    client.Disconnect(":1.7", "IPGUTIL");
    EXPECT_THAT(handled.announced,
                ElementsAre(ElementsAre(":1.7", "IPGUTIL", "y"), ElementsAre(":1.7", "IPGUTIL", "y"),
                            ElementsAre(":1.7", "IPGUTIL", "n")));
}

} // namespace
