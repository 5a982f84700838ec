// SPDX-License-Identifier: MIT
#include "OtherEndpoint.h"
#include "StreamFixture.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char Channel[] = "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER";

TEST_F(StreamTest, ARefusedSubscriptionIsReportedAndEndsWithExitCode1)
{
    m_service.Answer("requestPESCB", {{"result_internal", "0"}});
    CtlResult const result = RunCtl({"pes"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "zviptvctl: SubscribeForPES: the service refused: it answered with the result 0\n");

    m_service.Answer("requestCaptionCB", {{"result_internal", "0"}});
    EXPECT_EQ(RunCtl({"caption"}).errors,
              "zviptvctl: SubscribeForCaption: the service refused: it answered with the result 0\n");
}

/// A name in the answer to the announcement, and why it cannot be called.
struct NameCase
{
    char const* name;
    std::string reason;
};

TEST_F(StreamTest, ReportsAnAnnouncementWithoutAnEndpoint)
{
    for (NameCase const& given :
         {NameCase{"", "SubscribeForPES: this service has no data subscriber endpoint (IPTVDATASUBSCRIBER)"},
          NameCase{"junk", "dbusname is malformed: expected a bus name, got \"junk\""},
          NameCase{":1.4711", "SubscribeForPES: "}}) {
        m_service.SetPartnerName(given.name);
        CtlResult const result = RunCtl({"pes", "--seconds", "5"});
        EXPECT_NE(result.code, 0) << given.name;
        EXPECT_THAT(result.errors, StartsWith("zviptvctl: ")) << given.name;
        EXPECT_THAT(result.errors, HasSubstr(given.reason)) << given.name;
    }
}

TEST_F(StreamTest, PushesFromAnotherPathAreReportedOnce)
{
    auto const child = StartSubscribed({"pes", "--count", "1"});
    m_service.Notify(m_client, "PLAYERCONTROL", PesEntries());
    m_service.Notify(m_client, "PLAYERCONTROL", PesEntries());
    ASSERT_TRUE(child->WaitForErrors("zviptvctl: pushes are ignored: they come from the object "
                                     "/org/corvel/zviptvapi/DbusCommunication/PLAYERCONTROL instead of " +
                                         std::string(Channel) + "\n",
                                     patience))
        << child->Errors();
    m_service.Notify(m_client, "IPTVDATASUBSCRIBER", PesEntries());
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_EQ(result.output, "video pid=0x0100 pts=1 size=1\n");
    EXPECT_EQ(result.errors.find("are ignored"), result.errors.rfind("are ignored"));
}

TEST_F(StreamTest, PushesFromAnotherConnectionAreReported)
{
    OtherEndpoint other(m_bus.Address());
    auto const child = StartSubscribed({"pes"});
    other.Push(m_client, PesEntries());
    ASSERT_TRUE(child->WaitForErrors("zviptvctl: pushes are ignored: they come from the connection " +
                                         other.peer.Name() + " instead of the endpoint's, " +
                                         m_service.Name() + "\n",
                                     patience))
        << child->Errors();
    child->Signal(SIGINT);
    EXPECT_EQ(Finish(*child).output, "");
}

TEST_F(StreamTest, PushesWithoutAReadableFunctionNameAreReported)
{
    auto const child = StartSubscribed({"pes", "--seconds", "0.5"});
    m_service.NotifyRaw(m_client, "IPTVDATASUBSCRIBER",
                        WireBody::Variants({TextVariant("functionname", "PESCB")}));
    m_service.NotifyRaw(m_client, "IPTVDATASUBSCRIBER", WireBody::Strings({"PESCB"}));
    m_service.Notify(m_client, "IPTVDATASUBSCRIBER", Entries({{"function", "PESCB"}}));
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.errors,
                StartsWith("zviptvctl: pushes are ignored: \"functionname\" has the type s instead of ay\n"
                           "zviptvctl: pushes are ignored: they have the type (s) instead of (a{sv})\n"
                           "zviptvctl: pushes are ignored: \"functionname\" is missing\n"));
}

TEST_F(StreamTest, AClosedEndpointEndsWithExitCode3)
{
    OtherEndpoint other(m_bus.Address());
    m_service.AnswerAnnouncements([&](Announcement const&) {
        return WirePairs{{"dbusname", other.peer.Name()}};
    });
    auto const child = StartCtl({"pes"});
    auto const request =
        other.peer.WaitFor([](WireMessage const& message) { return message.member == "Send"; });
    ASSERT_TRUE(request);
    other.Push(request->sender, PesEntries());
    ASSERT_TRUE(child->WaitForOutput("size=1\n", patience));
    other.peer.Disconnect();
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.errors, EndsWith("zviptvctl: the service closed the connection " + other.peer.Name() +
                                        " of its endpoint IPTVDATASUBSCRIBER: no more pushes arrive; restart "
                                        "the service, then run this command again\n"));
}

} // namespace
} // namespace zviptv::test
