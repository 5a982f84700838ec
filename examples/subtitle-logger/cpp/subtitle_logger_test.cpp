// SPDX-License-Identifier: MIT
// Tests of the logger on a simulated television, which CMakeLists.txt starts with the guide evening.xml.
#include "SubtitleLogger.h"

#include <zviptv/testing/Television.h>

#include <glib.h>

using namespace std::chrono_literals;

class SubtitleLoggerTest : public testing::Test
{
protected:
    /// Iterates the main context until the text was written after the texts of earlier calls, 10 s at most.
    testing::AssertionResult Logs(std::string const& text)
    {
        auto const end = std::chrono::steady_clock::now() + 10s;
        std::size_t found = std::string::npos;
        while ((found = m_log.find(text, m_read)) == std::string::npos) {
            if (std::chrono::steady_clock::now() > end) {
                return testing::AssertionFailure() << "'" << text << "' was not written; the log is:\n"
                                                   << m_log;
            }
            if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
                g_usleep(1000);
            }
        }
        m_read = found + text.size();
        return testing::AssertionSuccess();
    }

    zviptv::simulated::Television m_simulated;
    std::string m_log;
    std::size_t m_read = 0;
    SubtitleLogger m_logger{{zviptv::Language("deu")},
                            [this](std::string const& line) { m_log += line + "\n"; }};
};

TEST_F(SubtitleLoggerTest, SelectsTheLanguage)
{
    EXPECT_TRUE(Logs("the service is available\n"));
    EXPECT_TRUE(Logs("audio: deu\n"));
    EXPECT_TRUE(m_simulated.Expect("SetCurrentAudioByIndex", {{"index", 1}}));
}

TEST_F(SubtitleLoggerTest, ShowsThePresentAndTheNextProgramme)
{
    EXPECT_TRUE(Logs("now: 2026-03-28 21:00:00 UTC, 120 min: Cellar Door\n"));
    EXPECT_TRUE(Logs("next: 2026-03-28 23:00:00 UTC, 60 min: Night Trains\n"));
}

TEST_F(SubtitleLoggerTest, WritesCaptionsWithTimeAndLanguage)
{
    m_simulated.Speed(5);
    EXPECT_TRUE(Logs("00:00:04.480 teletext deu: Zwei\n"));
    EXPECT_TRUE(Logs("00:00:05.480 teletext deu: (erased)\n"));
}

TEST_F(SubtitleLoggerTest, SelectsTheLanguageAgainAfterARestart)
{
    EXPECT_TRUE(Logs("audio: deu\n"));
    m_simulated.Die(0.1);
    EXPECT_TRUE(Logs("the service has left\n"));
    EXPECT_TRUE(Logs("audio: deu\n"));
}

TEST_F(SubtitleLoggerTest, ReportsGaps)
{
    m_simulated.Speed(5);
    EXPECT_TRUE(Logs("Eins\n")); // packets have come
    m_simulated.Die(1.1);        // longer than Subscription::LongPause
    EXPECT_TRUE(Logs("gap 1 of PID 257\n"));
}

TEST_F(SubtitleLoggerTest, ReportsARefusedSelection)
{
    m_simulated.Fault("SetCurrentAudioByIndex=result:0");
    EXPECT_TRUE(Logs("failed: SetCurrentAudioByIndex: refused"));
}

TEST_F(SubtitleLoggerTest, SaysWhyThereIsNoService)
{
    m_simulated.Die();
    EXPECT_TRUE(Logs("failed: GetSourceState: no service"));
}
