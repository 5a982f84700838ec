// SPDX-License-Identifier: MIT
#include "OtherEndpoint.h"
#include "WatchFixture.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::HasSubstr;

TEST_F(WatchTest, ARefusedSubscriptionIsReportedUntilItIsAccepted)
{
    m_service->Answer("requestPESCB", {{"result_internal", "0"}});
    auto const child = StartCtl({"watch"});
    std::string const reason = "SubscribeForPES: the service refused: it answered with the result 0\n";
    ASSERT_TRUE(child->WaitForOutput(reason, patience));
    ASSERT_TRUE(child->WaitForErrors("zviptvctl: " + reason, patience));
    m_service->Answer("requestPESCB", {{"result_internal", "1"}});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.errors, "zviptvctl: " + reason);
}

TEST_F(WatchTest, ALastingRefusalEndsWithExitCode1)
{
    m_service->Answer("requestPESCB", {{"result_internal", "0"}});
    CtlResult const result = RunCtl({"watch", "--json", "--seconds", "0.2"});
    EXPECT_EQ(result.code, 1);
    EXPECT_THAT(result.output,
                HasSubstr("{\"event\":\"trouble\",\"text\":\"SubscribeForPES: the service refused"));
    EXPECT_THAT(result.errors, HasSubstr("zviptvctl: SubscribeForPES: the service refused"));
}

TEST_F(WatchTest, ReportsIgnoredPushes)
{
    OtherEndpoint other(m_bus.Address());
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    std::string const client = m_service->ClientOf("IPTVDATASUBSCRIBER");
    other.Push(client, PesEntries());
    std::string const reason = "pushes are ignored: they come from the connection " + other.peer.Name() +
                               " instead of the endpoint's, " + m_service->Name() + "\n";
    ASSERT_TRUE(child->WaitForErrors("zviptvctl: " + reason, patience)) << child->Errors();
    EXPECT_THAT(child->Output(), HasSubstr("\n" + reason));
    m_service->Notify(client, "PLAYERCONTROL", PesEntries());
    ASSERT_TRUE(child->WaitForErrors("they come from the object "
                                     "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL instead of ",
                                     patience));
    child->Signal(SIGINT);
    EXPECT_EQ(Finish(*child).code, 0);
}

/// It connects again as soon as the helper bus names a connection that lives.
TEST_F(WatchTest, AClosedEndpointIsReportedAndReplaced)
{
    OtherEndpoint other(m_bus.Address());
    m_service->AnswerAnnouncements([&](Announcement const& announcement) {
        bool const isOther = announcement.type == "IPTVDATASUBSCRIBER" && other.peer.IsConnected();
        return WirePairs{{"dbusname", isOther ? other.peer.Name() : m_service->Name()}};
    });
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    other.peer.Disconnect();
    ASSERT_TRUE(
        child->WaitForErrors("zviptvctl: the service closed the connection " + other.peer.Name() +
                                 " of its endpoint IPTVDATASUBSCRIBER: no more pushes arrive; restart "
                                 "the service\n",
                             patience))
        << child->Errors();
    ASSERT_TRUE(m_service->WaitForRequest("requestPESCB"));
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_NE(result.output.find("subscribed to PES"), result.output.rfind("subscribed to PES"));
}

TEST_F(WatchTest, AnEndpointThatStaysClosedEndsWithAFailure)
{
    OtherEndpoint other(m_bus.Address());
    std::string const name = other.peer.Name();
    m_service->AnswerAnnouncements([&](Announcement const& announcement) {
        bool const isOther = announcement.type == "IPTVDATASUBSCRIBER";
        return WirePairs{{"dbusname", isOther ? name : m_service->Name()}};
    });
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("subscribed to PES packets\n", patience));
    other.peer.Disconnect();
    ASSERT_TRUE(child->WaitForErrors("no more pushes arrive", patience));
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_NE(result.code, 0);
}

} // namespace
} // namespace zviptv::test
