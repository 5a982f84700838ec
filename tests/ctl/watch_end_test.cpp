// SPDX-License-Identifier: MIT
#include "Terminal.h"
#include "WatchFixture.h"

#include <chrono>
#include <csignal>

namespace zviptv::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

std::size_t Count(std::string const& text, std::string const& part)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

/// As many ticks as seconds, the last one at the very end.
TEST_F(WatchTest, ReportsEverySecond)
{
    CtlResult const result = RunCtl({"watch", "--seconds", "2"});
    EXPECT_EQ(result.code, 0) << result.errors;
    EXPECT_EQ(Count(result.output, "playing, STC 123456, PES 0 packets"), 2U);
    EXPECT_EQ(Count(RunCtl({"watch", "--seconds", "0.1"}).output, "playing, STC 123456, PES"), 1U);
}

TEST_F(WatchTest, AMalformedAnswerIsReportedOnceAndEndsWithExitCode5)
{
    m_service->Answer("GetSourceState", {{"result_internal", "1"}});
    CtlResult const result = RunCtl({"watch", "--seconds", "1.5"});
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(result.output,
              "the service's answer to GetSourceState cannot be read: sourcestate is malformed: expected a "
              "signed 32-bit decimal number, got nothing\n");
    EXPECT_EQ(result.errors, "zviptvctl: " + result.output);
}

TEST_F(WatchTest, AnAnswerThatBecomesMalformedEndsWithExitCode5)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("PES 0 packets", patience));
    m_service->Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "soon"}});
    ASSERT_TRUE(child->WaitForOutput("playing, STC -, PES 0 packets", patience)) << child->Output();
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(
        Count(result.output, "the service's answer to GetSTCCount cannot be read: stcCount is malformed"),
        1U);
    EXPECT_THAT(result.errors,
                testing::StartsWith("zviptvctl: the service's answer to GetSTCCount cannot be read: "));
    EXPECT_TRUE(m_service->WaitForAnnouncement("IPTVDATASUBSCRIBER", "n"));
}

/// Ends `watch --seconds 1` against a service that hangs; the one call that blocks takes 2 seconds.
void ExpectEndAfterOneCall(std::string const& message)
{
    auto const start = std::chrono::steady_clock::now();
    CtlResult const result = RunCtl({"watch", "--seconds", "1"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(3900));
    EXPECT_EQ(result.code, 4);
    EXPECT_THAT(result.output, testing::StartsWith(message));
    EXPECT_EQ(Count(result.output, "no answer to"), 1U);
    EXPECT_THAT(result.errors, testing::StartsWith("zviptvctl: " + message));
}

TEST_F(WatchTest, AServiceThatHangsEndsWithExitCode4InTime)
{
    m_service->AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    ExpectEndAfterOneCall("GetSourceState: no answer to the announcement within 2000 ms");
}

TEST_F(WatchTest, AServiceThatDoesNotAnswerEndsWithExitCode4InTime)
{
    m_service->AnswerNothing("GetSourceState");
    ExpectEndAfterOneCall("GetSourceState: no answer to the request within 2000 ms");
}

/// A service that hangs while it is watched.
TEST_F(WatchTest, ALastingSilenceEndsWithExitCode4)
{
    auto const child = StartCtl({"watch", "--seconds", "3.5"});
    ASSERT_TRUE(child->WaitForOutput("playing, STC 123456", patience));
    m_service->AnswerNothing("GetSTCCount");
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 4);
    EXPECT_EQ(Count(result.output, "GetSTCCount: no answer to the request within 2000 ms"), 1U);
    EXPECT_THAT(result.errors,
                testing::StartsWith("zviptvctl: GetSTCCount: no answer to the request within 2000 ms"));
}

/// On a terminal: a line that fits and stays, with a line break before all that follows.
TEST_F(WatchTest, TheLiveLineFitsAndRemainsAtTheEnd)
{
    Terminal const terminal(60);
    ChildProcess child({"sh", "-c", "exec \"$0\" watch >\"$1\"", ZVIPTVCTL_PATH, terminal.Name()});
    ASSERT_TRUE(m_service->WaitForRequest("requestPESCB"));
    PushPes("256", "123");
    PushPes("257", "12345");
    std::string shown;
    while (shown.find("0x0100") == std::string::npos) {
        std::string const more = terminal.Read(patience);
        ASSERT_NE(more, "") << shown;
        shown += more;
    }
    EXPECT_THAT(shown, HasSubstr("\r\033[Kplaying, STC 123456, 2 packets, 0.0 kB/s: 0x0100 0.0 ..."));
    child.Signal(SIGINT);
    EXPECT_EQ(Finish(child).code, 0);
    EXPECT_THAT(terminal.Read(), EndsWith("\r\n"));
}

TEST_F(WatchTest, RepeatsNothingDuringAWait)
{
    Terminal const terminal(80);
    ChildProcess child(
        {"sh", "-c", "exec \"$0\" watch --seconds 4 >\"$1\"", ZVIPTVCTL_PATH, terminal.Name()});
    ASSERT_TRUE(m_service->WaitForRequest("requestPESCB"));
    m_service->Vanish();
    EXPECT_EQ(Finish(child).code, 3);
    EXPECT_THAT(terminal.Read(), EndsWith("waiting for the service to come back\r\n"));
}

} // namespace
} // namespace zviptv::test
