// SPDX-License-Identifier: MIT
#include "playback/Player.h"

#include <gtest/gtest.h>

namespace zviptv::test {
namespace {

using namespace std::chrono_literals;
using sim::Player;

/// A player of the sample on a clock that the test moves.
class PlayerPosition : public testing::Test
{
protected:
    void Play(bool loop)
    {
        m_player.emplace(sim::PlayerOptions{{ZVIPTV_SAMPLE_FILE}, {}, 1, loop}, m_clock,
                         [this](sim::PesPacket const& pes) { m_lastPts = pes.pts.value_or(m_lastPts); });
        m_player->Advance();
        m_player->SetDuration(12s);
    }

    void Pass(std::chrono::steady_clock::duration time) { m_now += time; }

    /// Until nothing more is due.
    void CatchUp()
    {
        while (m_player->Advance() == 0ms) {
        }
    }

    std::chrono::steady_clock::time_point m_now{100s};
    sim::SimulatedClock m_clock{1, {}, [this] { return m_now; }};
    std::optional<Player> m_player;
    std::uint64_t m_lastPts = 0;
};

/// The clock is ahead of a player that has not had its turn.
TEST_F(PlayerPosition, StaysWithinTheDurationOfALoop)
{
    Play(true);
    double const first = m_player->Position().count();
    Pass(11s);
    EXPECT_DOUBLE_EQ(m_player->Position().count(), first + 11);
    Pass(2s);
    EXPECT_NEAR(m_player->Position().count(), first + 1, 1e-6);
    Pass(36s);
    EXPECT_NEAR(m_player->Position().count(), first + 1, 1e-6);
}

TEST_F(PlayerPosition, StaysWithinTheDurationOfAFile)
{
    Play(false);
    Pass(13s);
    EXPECT_EQ(m_player->Position().count(), 12);
}

/// The shown position is in the next pass of the loop; the reader is still in the previous one.
TEST_F(PlayerPosition, SeeksFromTheStartWhileTheLoopIsUnread)
{
    Play(true);
    Pass(11900ms);
    CatchUp();
    std::uint64_t const atTheEnd = m_lastPts;
    Pass(600ms);
    ASSERT_NEAR(m_player->Position().count(), 0.5, 0.1);
    m_player->Seek(Player::Seconds(5));
    EXPECT_EQ(m_player->Position().count(), 5);
    Pass(1s);
    CatchUp();
    EXPECT_EQ(m_player->Position().count(), 6);
    EXPECT_NEAR(static_cast<double>(m_lastPts), static_cast<double>(atTheEnd) - 5.9 * 90'000, 90'000);
}

} // namespace
} // namespace zviptv::test
