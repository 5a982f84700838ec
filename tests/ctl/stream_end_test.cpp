// SPDX-License-Identifier: MIT
#include "StreamFixture.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class StreamSignalTest : public StreamTest, public testing::WithParamInterface<int>
{
};

TEST_P(StreamSignalTest, EndsTheSubscription)
{
    auto const child = StartSubscribed({"pes"});
    PushPes("1", "256", "1", "x");
    ASSERT_TRUE(child->WaitForOutput("size=1\n", patience));
    child->Signal(GetParam());
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_TRUE(IsUnsubscribed());
    EXPECT_THAT(child->Errors(), HasSubstr("1 packet, 1 byte in "));
}

INSTANTIATE_TEST_SUITE_P(Signals, StreamSignalTest, testing::Values(SIGINT, SIGTERM));

TEST_F(StreamTest, EndsAfterTheGivenSeconds)
{
    auto const child = StartSubscribed({"pes", "--seconds", "0.01"});
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_TRUE(IsUnsubscribed());
    EXPECT_THAT(child->Errors(), StartsWith("zviptvctl: 0 packets, 0 bytes in "));
}

TEST_F(StreamTest, EndsWhenTheServiceLeaves)
{
    auto const child = StartSubscribed({"pes"});
    PushPes("1", "256", "1", "x");
    ASSERT_TRUE(child->WaitForOutput("size=1\n", patience));
    m_service.Vanish();
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 3);
    EXPECT_THAT(result.errors, HasSubstr("1 packet, 1 byte in "));
    EXPECT_THAT(result.errors,
                HasSubstr("zviptvctl: the service left the bus; start it, then run this command again\n"));
}

/// GLib would end the process otherwise.
TEST_F(StreamTest, EndsWithExitCode4WhenTheBusCloses)
{
    auto const child = StartSubscribed({"pes"});
    PushPes("1", "256", "1", "x");
    ASSERT_TRUE(child->WaitForOutput("size=1\n", patience));
    m_bus.Kill();
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.errors,
                HasSubstr("zviptvctl: the bus closed the connection; check that it still runs\n"));
}

TEST_F(StreamTest, EndsWithExitCode4IfTheServiceDoesNotSubscribe)
{
    m_service.AnswerError("requestPESCB");
    CtlResult const result = RunCtl({"pes"});
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(
        result.errors,
        "zviptvctl: SubscribeForPES: the service answered with the error org.corvel.test.Failed: scripted "
        "error\n");
}

TEST_F(StreamTest, AFullDiskEndsTheSubscription)
{
    auto const child = StartSubscribed({"pes", "--out", "/dev/full"});
    PushPes("1", "256", "1", "x");
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 6);
    EXPECT_THAT(result.errors, HasSubstr("zviptvctl: cannot write '/dev/full': No space left on device\n"));
    EXPECT_TRUE(IsUnsubscribed());
}

TEST_F(StreamTest, ReportsAnUnwritableFileBeforeSubscribing)
{
    CtlResult const result = RunCtl({"pes", "--out", "/nonexistent/file"});
    EXPECT_EQ(result.code, 6);
    EXPECT_EQ(result.errors, "zviptvctl: cannot write '/nonexistent/file': No such file or directory\n");
    EXPECT_TRUE(m_service.Requests().empty());
}

TEST_F(StreamTest, EndsTheSubscriptionWhenItsReaderClosesThePipe)
{
    ChildProcess child({"bash", "-c", "\"$0\" pes | head -n 1; exit ${PIPESTATUS[0]}", ZVIPTVCTL_PATH});
    auto const request = m_service.WaitForRequest("requestPESCB");
    ASSERT_TRUE(request);
    m_client = request->sender;
    m_service.ClearRecords();
    PushPes("1", "256", "1", "x");
    ASSERT_TRUE(child.WaitForOutput("size=1\n", patience));
    // One of the next writes meets the closed pipe.
    while (!m_service.WaitForRequest("requestPESCB", std::chrono::milliseconds(5))) {
        PushPes("1", "256", "1", "x");
    }
    EXPECT_TRUE(IsUnsubscribed());
    EXPECT_EQ(Finish(child).code, 0);
}

TEST_F(StreamTest, ReportsOnceThatTheSourceHasEnded)
{
    m_service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "3"}});
    auto const child = StartSubscribed({"pes", "--count", "1"});
    ASSERT_TRUE(child->WaitForErrors(
        "zviptvctl: the source has ended: packets arrive only if it starts again; press Ctrl-C to end\n",
        patience));
    PushPes("1", "256", "1", "x"); // it waits all the same
    EXPECT_EQ(Finish(*child).code, 0);
    EXPECT_EQ(child->Output(), "video pid=0x0100 pts=1 size=1\n");
}

/// Each of the two is reported once.
TEST_F(StreamTest, ReportsSilenceAndThenTheEnd)
{
    m_service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "2"}});
    auto const child = StartSubscribed({"caption"}, "requestCaptionCB");
    ASSERT_TRUE(child->WaitForErrors("zviptvctl: no data has arrived for 5 seconds; press Ctrl-C to end\n",
                                     patience));
    m_service.ClearRecords();
    ASSERT_TRUE(m_service.WaitForRequest("GetSourceState")); // five seconds later
    m_service.Answer("GetSourceState", {{"result_internal", "1"}, {"sourcestate", "3"}});
    ASSERT_TRUE(child->WaitForErrors("zviptvctl: the source has ended", patience));
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.errors, testing::MatchesRegex("zviptvctl: no data has [^\n]*\nzviptvctl: the source "
                                                     "[^\n]*\nzviptvctl: 0 packets, [^\n]*\n"));
}

TEST_F(StreamTest, ReportsSilenceWithoutASourceState)
{
    m_service.AnswerError("GetSourceState");
    auto const child = StartSubscribed({"pes", "--seconds", "6"});
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.errors,
                StartsWith("zviptvctl: no data has arrived for 5 seconds; press Ctrl-C to end\n"));
}

TEST_F(StreamTest, ReportsAndSkipsUnreadableNotifications)
{
    auto const child = StartSubscribed({"pes", "--count", "1"});
    Push({{"functionname", "PESCB"}, {"pesType", "1"}});
    PushPes("1", "256", "1", "x");
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(result.output, "video pid=0x0100 pts=1 size=1\n");
    EXPECT_THAT(result.errors,
                StartsWith("zviptvctl: a notification cannot be read: pesDataSize is malformed: expected a "
                           "signed 32-bit decimal number, got nothing; skipped\n"));
    EXPECT_THAT(result.errors, HasSubstr("zviptvctl: 1 notification could not be read\n"));
    EXPECT_TRUE(IsUnsubscribed());
}

} // namespace
} // namespace zviptv::test
