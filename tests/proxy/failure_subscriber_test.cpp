// SPDX-License-Identifier: MIT
#include "FailureText.h"
#include "MethodTable.h"
#include "SubscriberTest.h"

using namespace zviptv::test;

namespace {

using SubscriberFailure = SubscriberTest;

void Ignore(ZVPESData& /*pes*/, void* /*userData*/) {}
void Ignore(ZVCaption& /*caption*/, void* /*userData*/) {}

TEST_F(SubscriberFailure, IsNoneOnSuccess)
{
    int pes = 0;
    int caption = 0;
    EXPECT_TRUE(m_subscriber->SubscribeForPES(Ignore, nullptr, pes));
    EXPECT_EQ(LastFailure(), NoFailure("SubscribeForPES"));
    EXPECT_TRUE(m_subscriber->SubscribeForCaption(Ignore, nullptr, caption));
    EXPECT_EQ(LastFailure(), NoFailure("SubscribeForCaption"));
    EXPECT_FALSE(m_subscriber->UnSubscribeForPES(pes)); // as always
    EXPECT_EQ(LastFailure(), NoFailure("UnSubscribeForPES"));
    EXPECT_FALSE(m_subscriber->UnsubscribeForCaption(caption));
    EXPECT_EQ(LastFailure(), NoFailure("UnsubscribeForCaption"));
}

TEST_F(SubscriberFailure, ReportsAnUnsentSubscription)
{
    m_service.AnswerError("requestPESCB");
    m_service.AnswerError("requestCaptionCB");
    std::string const reason = " |  | org.corvel.test.Failed | scripted error";
    int pes = 0;
    EXPECT_TRUE(m_subscriber->SubscribeForPES(Ignore, nullptr, pes));
    EXPECT_EQ(LastFailure(), "bus error | SubscribeForPES" + reason);
    int caption = 0;
    EXPECT_TRUE(m_subscriber->SubscribeForCaption(Ignore, nullptr, caption));
    EXPECT_EQ(LastFailure(), "bus error | SubscribeForCaption" + reason);
    EXPECT_FALSE(m_subscriber->UnSubscribeForPES(pes));
    EXPECT_EQ(LastFailure(), "bus error | UnSubscribeForPES" + reason);
    EXPECT_FALSE(m_subscriber->UnsubscribeForCaption(caption));
    EXPECT_EQ(LastFailure(), "bus error | UnsubscribeForCaption" + reason);
}

/// The service gets one request: a further subscription waits for the same data.
TEST_F(SubscriberFailure, RepeatsTheFailureOfTheFirstSubscription)
{
    m_service.AnswerError("requestPESCB");
    SubscribeForPES(Ignore);
    WaitForNextSecond();
    SubscribeForPES(Ignore);
    EXPECT_EQ(LastFailure(), "bus error | SubscribeForPES |  | org.corvel.test.Failed | scripted error");
}

TEST_F(SubscriberFailure, ReportsARefusal)
{
    m_service.Answer("requestPESCB", {{"result_internal", "0"}});
    int key = 0;
    EXPECT_TRUE(m_subscriber->SubscribeForPES(Ignore, nullptr, key));
    EXPECT_EQ(LastFailure(),
              "refused | SubscribeForPES |  |  | the service refused: it answered with the result 0");
}

TEST_F(SubscriberFailure, ReportsWrongArguments)
{
    int key = 0;
    EXPECT_FALSE(m_subscriber->SubscribeForPES(nullptr, nullptr, key));
    EXPECT_EQ(LastFailure(), "invalid argument | SubscribeForPES |  |  | there is no callback to subscribe");
    EXPECT_FALSE(m_subscriber->UnsubscribeForCaption(42));
    EXPECT_EQ(LastFailure(),
              "invalid argument | UnsubscribeForCaption |  |  | there is no subscription with the key 42");
}

TEST_F(SubscriberFailure, ReportsThatNoKeyCouldBeMade)
{
    WaitForNextSecond();
    int key = 0;
    EXPECT_TRUE(m_subscriber->SubscribeForPES(Ignore, nullptr, key));
    if (!m_subscriber->SubscribeForPES(Ignore, nullptr, key)) { // unless a second has passed
        EXPECT_EQ(LastFailure(),
                  "refused | SubscribeForPES |  |  | no key can be made for a second subscription "
                  "within one second; try again in the next one");
    }
}

TEST_F(SubscriberFailure, ReportsThatTheObjectIsGone)
{
    CIPTVServiceAPI::DestroyIPTVDataSubscriber();
    int key = 42;
    EXPECT_FALSE(m_subscriber->SubscribeForPES(Ignore, nullptr, key));
    EXPECT_EQ(LastFailure(), GoneFailure("SubscribeForPES"));
    EXPECT_FALSE(m_subscriber->SubscribeForCaption(Ignore, nullptr, key));
    EXPECT_EQ(LastFailure(), GoneFailure("SubscribeForCaption"));
    EXPECT_FALSE(m_subscriber->UnSubscribeForPES(key));
    EXPECT_EQ(LastFailure(), GoneFailure("UnSubscribeForPES"));
    EXPECT_FALSE(m_subscriber->UnsubscribeForCaption(key));
    EXPECT_EQ(LastFailure(), GoneFailure("UnsubscribeForCaption"));
}

/// The partner's loss has been handled; the object stays.
TEST_F(SubscriberFailure, ReportsThatTheServiceHasLeft)
{
    std::string const lost = "Connection lost with partner id=" + m_service.Name();
    m_service.Vanish();
    ASSERT_TRUE(RunUntil([&] { return m_log.Has(ZV_LOG_ERROR, lost); }));
    RunPending();
    int key = 0;
    EXPECT_TRUE(m_subscriber->SubscribeForPES(Ignore, nullptr, key));
    EXPECT_EQ(LastFailure(),
              "no service | SubscribeForPES |  |  | there is no partner on the bus: it has left, or "
              "was never connected; destroy the object and create it again");
}

/// The exception leaves the main loop. The failure names the notification.
TEST_F(SubscriberFailure, ReportsTheKeyOfAMalformedNotification)
{
    SubscribeForPES(Ignore);
    SubscribeForCaption(Ignore);
    struct Case
    {
        WireEntries notification;
        std::string thrown;
        std::string failure;
    };
    std::vector<Case> const cases = {
        {PESOf("1", "x", "no PID"), "invalid_argument: stoi",
         MalformedFailure("PESCB", "pesPID", "a signed 32-bit decimal number", "\"no PID\"")},
        {PESOf("1", "x", "256", ""), "invalid_argument: stoll",
         MalformedFailure("PESCB", "pesPTS", "a signed 64-bit decimal number", "nothing")},
        {PESOf("-1", "x"), "length_error: vector::_M_default_append",
         MalformedFailure("PESCB", "pesDataSize", "a number from 0 to 1048577", "\"-1\"")},
        {CaptionOf("1", "x", "99999999999"), "out_of_range: stoi",
         MalformedFailure("CaptionCB", "captionType", "a signed 32-bit decimal number", "\"99999999999\"")},
    };
    for (Case const& malformed : cases) {
        Notify(malformed.notification);
        EXPECT_EQ(FailureOf([] { RunUntil([] { return false; }); }), malformed.thrown);
        EXPECT_EQ(LastFailure(), malformed.failure);
    }
}

} // namespace
