// SPDX-License-Identifier: MIT
#include "StreamFixture.h"
#include "Terminal.h"

#include <csignal>

namespace zviptv::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

/// The program subscribed, its standard error a terminal.
class RateLineTest : public StreamTest
{
protected:
    void Start(std::string const& command, std::string const& function)
    {
        m_child = std::make_unique<ChildProcess>(
            Words{"sh", "-c", "exec \"$0\" \"$1\" 2>\"$2\"", ZVIPTVCTL_PATH, command, m_terminal.Name()});
        auto const request = m_service.WaitForRequest(function);
        ASSERT_TRUE(request);
        m_client = request->sender;
    }

    /// Whether the terminal shows the text in time, after its earlier output.
    bool Shows(std::string const& pattern)
    {
        std::string shown;
        while (!testing::Value(shown, testing::ContainsRegex(pattern))) {
            std::string const more = m_terminal.Read(patience);
            if (more.empty()) {
                return false;
            }
            shown += more;
            m_shown += more;
        }
        return true;
    }

    /// Interrupts the program. From then on, the output of the terminal is only in m_shown.
    void Interrupt()
    {
        m_shown.clear();
        m_child->Signal(SIGINT);
        EXPECT_EQ(Finish(*m_child).code, 0);
        m_shown += m_terminal.Read();
    }

    Terminal m_terminal{80};
    std::unique_ptr<ChildProcess> m_child;
    std::string m_shown;
};

TEST_F(RateLineTest, ShowsTheDataOfTheLastSecond)
{
    Start("pes", "requestPESCB");
    EXPECT_TRUE(Shows("\r\x1b\\[K0 packets, 0 bytes, 0\\.0 kB/s")) << m_shown;
    PushPes("1", "256", "1", PatternBytes(100000));
    EXPECT_TRUE(Shows("\r\x1b\\[K1 packet, 100000 bytes, [1-9][0-9]*\\.[0-9] kB/s")) << m_shown;
    EXPECT_TRUE(Shows("\r\x1b\\[K1 packet, 100000 bytes, 0\\.0 kB/s")) << m_shown;
    PushPes("1", "256", "2", PatternBytes(50000));
    EXPECT_TRUE(Shows("\r\x1b\\[K2 packets, 150000 bytes, [1-9][0-9]*\\.[0-9] kB/s")) << m_shown;
    EXPECT_THAT(m_shown, Not(HasSubstr("\n"))) << "one line, rewritten";
    Interrupt();
    EXPECT_EQ(m_child->Output(), "video pid=0x0100 pts=1 size=100000\nvideo pid=0x0100 pts=2 size=50000\n");
    EXPECT_THAT(m_shown, EndsWith(" kB/s)\r\n"));
    EXPECT_THAT(m_shown, HasSubstr("\r\x1b[Kzviptvctl: 2 packets, 150000 bytes in "));
}

TEST_F(RateLineTest, SupportsCaptions)
{
    Start("caption", "requestCaptionCB");
    PushCaption("5", PatternBytes(30000));
    EXPECT_TRUE(Shows("\r\x1b\\[K1 packet, 30000 bytes, [1-9][0-9]*\\.[0-9] kB/s")) << m_shown;
    Interrupt();
    EXPECT_EQ(m_child->Output(), "caption size=30000\n");
    EXPECT_THAT(m_shown, HasSubstr("zviptvctl: 1 packet, 30000 bytes in "));
}

/// In a file, or a pipe, it would be a line that never ends.
TEST_F(StreamTest, NoRateLineWithoutATerminal)
{
    auto const child = StartSubscribed({"pes", "--seconds", "2.5"});
    PushPes("1", "256", "1", "x");
    CtlResult const result = Finish(*child);
    EXPECT_EQ(result.code, 0);
    EXPECT_THAT(result.errors, MatchesRegex("zviptvctl: 1 packet, 1 byte in [^\r\n]*\n"));
}

} // namespace
} // namespace zviptv::test
