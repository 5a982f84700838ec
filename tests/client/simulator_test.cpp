// SPDX-License-Identifier: MIT
#include "ChildProcess.h"
#include "ClientTest.h"

#include <csignal>

using namespace zviptv;
using namespace zviptv::test;
using namespace std::chrono_literals;

namespace {

/// A television on the simulator, which plays the sample stream with its guide.
class SimulatorTest : public ClientTest
{
protected:
    static std::unique_ptr<ChildProcess> Start()
    {
        return std::make_unique<ChildProcess>(std::vector<std::string>{
            ZVIPTV_SIM_PATH, "--bus", "system", "--quiet", "--loop", "--ts",
            std::string(SAMPLE_FOLDER) + "/sample.ts", "--guide", std::string(SAMPLE_FOLDER) + "/sample.xml",
            "--time", "1774735200", "--rating-limit", "12"});
    }
    bool AwaitAvailable(bool isAvailable)
    {
        return RunUntil([&] { return m_television.IsAvailable() == isAvailable; });
    }

    std::unique_ptr<ChildProcess> m_simulator = Start();
    Television m_television;
};

TEST_F(SimulatorTest, ReadsItsAnswers)
{
    ASSERT_TRUE(AwaitAvailable(true));
    // The tables of the stream are read in the first seconds.
    Result<std::vector<Subtitle>> subtitles = m_television.Broadcast().Subtitles();
    ASSERT_TRUE(RunUntil([&] {
        subtitles = m_television.Broadcast().Subtitles();
        return subtitles && subtitles->size() == 3;
    }));
    EXPECT_EQ((*subtitles)[2].kind, SubtitleKind::Teletext);
    EXPECT_EQ(ToString((*subtitles)[2].language), "deu");
    EXPECT_EQ((*subtitles)[2].page, 0x89);
    auto const tracks = m_television.Broadcast().AudioTracks();
    ASSERT_TRUE(Succeeded(tracks));
    ASSERT_EQ(tracks->size(), 2U);
    EXPECT_EQ(ToString((*tracks)[1].language), "deu");
    EXPECT_EQ((*tracks)[1].pid, 0x102);
    EXPECT_EQ((*tracks)[1].encoding, AudioCoding::Mpeg);
    ASSERT_TRUE(Succeeded(m_television.Player().SetCurrentAudioByIndex(1)));
    auto const current = m_television.Broadcast().GetCurrentAudioInfo();
    ASSERT_TRUE(Succeeded(current));
    EXPECT_EQ(current->index, 1);
    EXPECT_EQ(KindOf(m_television.Player().SetCurrentAudioByIndex(7)), "refused");
}

TEST_F(SimulatorTest, ReadsItsGuide)
{
    ASSERT_TRUE(AwaitAvailable(true));
    auto const now = m_television.Guide().GetPresentProgram(1);
    ASSERT_TRUE(Succeeded(now));
    ASSERT_TRUE(now->has_value());
    Programme const& film = **now;
    EXPECT_EQ(ToString(film), "2026-03-28 21:30:00 UTC, 180 min: Cellar Door");
    EXPECT_EQ(film.genres, (std::vector<std::string>{"Movie", "Horror"}));
    EXPECT_EQ(film.rating->minimumAge, 17);
    auto const next = m_television.Guide().GetProgram(film.Id(), Neighbour::Next);
    ASSERT_TRUE(Succeeded(next));
    ASSERT_TRUE(next->has_value());
    EXPECT_EQ((*next)->title, "Night Trains");
    EXPECT_TRUE((*next)->start == film.End());
    auto const list = m_television.Guide().GetProgramList(1, film.start, 4h);
    ASSERT_TRUE(Succeeded(list));
    EXPECT_GE(list->size(), 2U);
    EXPECT_TRUE(list->front() == film);
    auto const none = m_television.Guide().FindProgram(1, 4000000000U);
    ASSERT_TRUE(Succeeded(none));
    EXPECT_FALSE(none->has_value());
}

TEST_F(SimulatorTest, SurvivesAKillAndARestart)
{
    ASSERT_TRUE(AwaitAvailable(true));
    ASSERT_TRUE(Succeeded(m_television.Player().MuteAudio(true)));
    m_simulator->Signal(SIGKILL);
    ASSERT_TRUE(AwaitAvailable(false));
    EXPECT_EQ(KindOf(m_television.Player().MuteAudio(true)), "no service");
    m_simulator = Start();
    ASSERT_TRUE(AwaitAvailable(true));
    Outcome<void> outcome;
    m_television.Player().MuteAudio(true, outcome.Take());
    ASSERT_TRUE(outcome.Await());
    EXPECT_TRUE(Succeeded(*outcome));
    EXPECT_TRUE(Succeeded(m_television.Player().MuteAudio(false)));
}

} // namespace
