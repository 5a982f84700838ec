// SPDX-License-Identifier: MIT
#include "ClientTest.h"

#include "client/link/Link.h"

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

/// A link that requests packets, like a television with a subscription.
class PushRequestTest : public ServiceClientTest
{
protected:
    PushRequestTest()
    {
        client::LinkOptions options;
        options.handleNumber = 256;
        m_link = std::make_shared<client::Link>(options);
        m_link->SetPushHandler(
            [this](CMessageBuffer& message) { m_pushed.emplace_back(message.GetValue("functionname")); });
        m_link->SetErrorHandler(
            [this](Failure const& failure) { m_reported.emplace_back(ToString(failure.kind)); });
        m_link->Begin();
    }
    ~PushRequestTest() override { m_link->End(); }

    /// The requests that the service has received: "requestPESCB 1", for example.
    std::vector<std::string> Requests() const
    {
        std::vector<std::string> requests;
        for (WireMessage const& request : m_service->Requests()) {
            requests.push_back(request.Value("functionname") + " " + request.Value("on"));
        }
        return requests;
    }
    bool AwaitRequests(std::size_t count)
    {
        return RunUntil([&] { return m_service->Requests().size() == count; });
    }
    bool AwaitAvailable(bool isAvailable)
    {
        return RunUntil([&] { return m_link->IsAvailable() == isAvailable; });
    }
    void Push(std::string const& function)
    {
        m_service->Notify(m_service->ClientOf("IPTVDATASUBSCRIBER"), "IPTVDATASUBSCRIBER",
                          Entries({{"functionname", function}}));
    }

    std::shared_ptr<client::Link> m_link;
    std::vector<std::string> m_pushed;
    std::vector<std::string> m_reported;
};

TEST_F(PushRequestTest, SendsOneRequestAndOneEnd)
{
    m_link->Pushes().SetWanted("requestPESCB", true);
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitRequests(1));
    ASSERT_TRUE(AwaitAvailable(true));
    EXPECT_EQ(m_service->LastRequest().path, "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER");
    EXPECT_EQ(m_service->LastRequest().entries,
              Entries({{"functionname", "requestPESCB"}, {"handleID", "256"}, {"on", "1"}}));
    Push("PESCB");
    ASSERT_TRUE(RunUntil([&] { return m_pushed.size() == 1; }));
    m_link->Pushes().SetWanted("requestCaptionCB", true);
    m_link->Pushes().SetWanted("requestPESCB", false);
    ASSERT_TRUE(AwaitRequests(3));
    EXPECT_THAT(Requests(), ElementsAre("requestPESCB 1", "requestCaptionCB 1", "requestPESCB 0"));
}

TEST_F(PushRequestTest, SendsAChangeAfterAnOutstandingRequest)
{
    m_link->Pushes().SetWanted("requestPESCB", true);
    m_link->Pushes().SetWanted("requestPESCB", false);
    ASSERT_TRUE(AwaitRequests(2));
    EXPECT_THAT(Requests(), ElementsAre("requestPESCB 1", "requestPESCB 0"));
}

TEST_F(PushRequestTest, SendsAChangeAfterAFailedRequest)
{
    m_service->AnswerBy("requestPESCB", [](WireMessage const& request) {
        return request.Value("on") == "0"
                   ? WireAnswer::Error("org.corvel.test.Failed", "not now").After(100ms)
                   : WireAnswer(Entries({{"result_internal", "1"}}));
    });
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitRequests(1));
    m_link->Pushes().SetWanted("requestPESCB", false);
    ASSERT_TRUE(AwaitRequests(2));
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitRequests(3));
    EXPECT_THAT(Requests(), ElementsAre("requestPESCB 1", "requestPESCB 0", "requestPESCB 1"));
}

TEST_F(PushRequestTest, AsksAgainAfterARestart)
{
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitRequests(1));
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(AwaitAvailable(true));
        KillService();
        ASSERT_TRUE(AwaitAvailable(false));
        StartService();
        ASSERT_TRUE(AwaitRequests(1));
        EXPECT_THAT(Requests(), ElementsAre("requestPESCB 1"));
        Push("PESCB");
        ASSERT_TRUE(RunUntil([&] { return m_pushed.size() == static_cast<std::size_t>(i) + 1; }));
    }
    EXPECT_TRUE(m_reported.empty());
}

TEST_F(PushRequestTest, AsksAServiceThatStartsLater)
{
    KillService();
    ASSERT_TRUE(AwaitAvailable(false));
    m_link->Pushes().SetWanted("requestPESCB", true);
    RunPending();
    StartService();
    ASSERT_TRUE(AwaitRequests(1));
}

TEST_F(PushRequestTest, RetriesAfterAFailureAndReportsItOnce)
{
    int asked = 0;
    m_service->AnswerBy("requestPESCB", [&](WireMessage const&) {
        return ++asked < 3 ? WireAnswer::Error("org.corvel.test.Failed", "not yet")
                           : WireAnswer(Entries({{"result_internal", "1"}}));
    });
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitRequests(3));
    EXPECT_THAT(m_reported, ElementsAre("bus error"));
}

TEST_F(PushRequestTest, AsksAgainAfterARestartOfTheBus)
{
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitRequests(1));
    ASSERT_TRUE(AwaitAvailable(true));
    KillService();
    m_bus.Restart();
    StartService();
    ASSERT_TRUE(AwaitRequests(1));
}

TEST_F(PushRequestTest, ReplacesAnEndpointThatLeavesAlone)
{
    auto endpoint = std::make_unique<WirePeer>(m_bus.Address());
    endpoint->SetHandler([](WireMessage const&) { return Entries({{"result_internal", "1"}}); });
    m_service->SetPartnerName(endpoint->Name());
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitAvailable(true));
    ASSERT_TRUE(RunUntil([&] {
        return endpoint->WaitFor([](WireMessage const& message) { return message.Value("on") == "1"; }, 0ms)
            .has_value();
    }));
    RunPending();
    m_service->SetPartnerName(m_service->Name());
    endpoint.reset();
    ASSERT_TRUE(AwaitRequests(1));
    EXPECT_THAT(Requests(), ElementsAre("requestPESCB 1"));
}

TEST_F(PushRequestTest, APushHandlerMayEndTheLink)
{
    m_link->SetPushHandler([this](CMessageBuffer& message) {
        m_link->End();
        m_pushed.push_back(message.GetValue("functionname"));
    });
    m_link->Pushes().SetWanted("requestPESCB", true);
    ASSERT_TRUE(AwaitRequests(1));
    Push("PESCB");
    Push("PESCB");
    ASSERT_TRUE(RunUntil([&] { return !m_pushed.empty(); }));
    RunPending();
    EXPECT_EQ(m_pushed.size(), 1U);
}

} // namespace
