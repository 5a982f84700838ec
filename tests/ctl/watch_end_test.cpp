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
TEST_F(WatchTest, EverySecondHasItsTick)
{
    CtlResult const result = RunCtl({"watch", "--seconds", "2"});
    EXPECT_EQ(0, result.code) << result.errors;
    EXPECT_EQ(2U, Count(result.output, "playing, STC 123456, PES 0 packets"));
    EXPECT_EQ(1U, Count(RunCtl({"watch", "--seconds", "0.1"}).output, "playing, STC 123456, PES"));
}

TEST_F(WatchTest, AMalformedAnswerIsToldOnceAndEndsWithFive)
{
    m_service->Answer("GetSourceState", {{"result_internal", "1"}});
    CtlResult const result = RunCtl({"watch", "--seconds", "1.5"});
    EXPECT_EQ(5, result.code);
    EXPECT_EQ("the service's answer to GetSourceState lacks a number or spells it badly (result or state)\n",
              result.output);
    EXPECT_EQ("", result.errors);
}

TEST_F(WatchTest, AnAnswerThatTurnsMalformedEndsWithFive)
{
    auto const child = StartCtl({"watch"});
    ASSERT_TRUE(child->WaitForOutput("PES 0 packets", patience));
    m_service->Answer("GetSTCCount", {{"result_internal", "1"}, {"stcCount", "soon"}});
    ASSERT_TRUE(child->WaitForOutput("playing, STC -, PES 0 packets", patience)) << child->Output();
    child->Signal(SIGINT);
    CtlResult const result = Finish(*child);
    EXPECT_EQ(5, result.code);
    EXPECT_EQ(1U, Count(result.output, "the service's answer to GetSTCCount lacks a number"));
    EXPECT_EQ("", result.errors);
    EXPECT_TRUE(m_service->WaitForAnnouncement("IPTVDATASUBSCRIBER", "n"));
}

/// Ends `watch --seconds 1` against a service that hangs; the one call that blocks takes 2 seconds.
void ExpectEndAfterOneCall(std::string const& message)
{
    auto const start = std::chrono::steady_clock::now();
    CtlResult const result = RunCtl({"watch", "--seconds", "1"});
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(3900));
    EXPECT_EQ(4, result.code);
    EXPECT_THAT(result.output, testing::StartsWith(message));
    EXPECT_EQ(1U, Count(result.output, "no answer from the service"));
    EXPECT_EQ("", result.errors);
}

TEST_F(WatchTest, AServiceThatHangsEndsWithFourInTime)
{
    m_service->AnswerAnnouncements([](Announcement const&) { return WireAnswer::Nothing(); });
    ExpectEndAfterOneCall("GetSourceState: no answer from the service (");
}

TEST_F(WatchTest, AServiceThatDoesNotAnswerEndsWithFourInTime)
{
    m_service->AnswerNothing("GetSourceState");
    ExpectEndAfterOneCall("GetSourceState: no answer from the service ([24] Timeout");
}

/// A service that hangs while it is watched.
TEST_F(WatchTest, ASilenceThatLastsEndsWithFour)
{
    auto const child = StartCtl({"watch", "--seconds", "3.5"});
    ASSERT_TRUE(child->WaitForOutput("playing, STC 123456", patience));
    m_service->AnswerNothing("GetSTCCount");
    CtlResult const result = Finish(*child);
    EXPECT_EQ(4, result.code);
    EXPECT_EQ(1U, Count(result.output, "GetSTCCount: no answer from the service ("));
    EXPECT_EQ("", result.errors);
}

/// On a terminal: a line that fits and stays, with a line break before all that follows.
TEST_F(WatchTest, TheLiveLineFitsAndIsLeftAtTheEnd)
{
    Terminal const terminal(60);
    ChildProcess child({"sh", "-c", "exec \"$0\" watch >\"$1\"", ZVIPTVCTL_PATH, terminal.Name()});
    ASSERT_TRUE(m_service->WaitForRequest("requestPESCB"));
    PushPes("256", "123");
    PushPes("257", "12345");
    std::string shown;
    while (shown.find("0x0100") == std::string::npos) {
        std::string const more = terminal.Read(patience);
        ASSERT_NE("", more) << shown;
        shown += more;
    }
    EXPECT_THAT(shown, HasSubstr("\r\033[Kplaying, STC 123456, 2 packets, 0.0 kB/s: 0x0100 0.0 ..."));
    child.Signal(SIGINT);
    EXPECT_EQ(0, Finish(child).code);
    EXPECT_THAT(terminal.Read(), EndsWith("\r\n"));
}

TEST_F(WatchTest, NothingIsRepeatedWhileItWaits)
{
    Terminal const terminal(80);
    ChildProcess child(
        {"sh", "-c", "exec \"$0\" watch --seconds 4 >\"$1\"", ZVIPTVCTL_PATH, terminal.Name()});
    ASSERT_TRUE(m_service->WaitForRequest("requestPESCB"));
    m_service->Vanish();
    EXPECT_EQ(3, Finish(child).code);
    EXPECT_THAT(terminal.Read(), EndsWith("waiting for the service to come back\r\n"));
}

} // namespace
} // namespace zviptv::test
