// SPDX-License-Identifier: MIT
#include "Player.h"

#include <zviptv/testing/Television.h>

namespace {

class PlayerTest : public testing::Test
{
protected:
    zviptv::simulated::Television m_television;
    Player m_player;
};

TEST_F(PlayerTest, Mutes)
{
    EXPECT_TRUE(m_player.Mute(true));
    EXPECT_TRUE(m_television.Expect("MuteAudio", {{"onoff", true}}));
    EXPECT_EQ(m_television.Property("AudioMuted"), "true");
}

TEST_F(PlayerTest, TriesAgainWhenTheServiceRefuses)
{
    m_television.Fault("MuteAudio=result:0", 1);
    EXPECT_TRUE(m_player.Mute(true));
    EXPECT_EQ(m_television.Requests().size(), 2U);
}

TEST_F(PlayerTest, ReportsAServiceThatIsGone)
{
    m_television.Die();
    EXPECT_FALSE(m_player.Mute(true));
    EXPECT_EQ(m_player.Problem().find("MuteAudio: no service"), 0U) << m_player.Problem();
}

TEST_F(PlayerTest, UnlocksALockedProgramme)
{
    m_television.Lock("programme");
    EXPECT_TRUE(m_player.UnlockWhenLocked(std::chrono::seconds(10)));
    EXPECT_EQ(m_television.Property("ProgrammeLocked"), "false");
}

TEST_F(PlayerTest, DoesNotUnlockAnUnlockedProgramme)
{
    EXPECT_FALSE(m_player.UnlockWhenLocked(std::chrono::milliseconds(300)));
    EXPECT_TRUE(m_television.ExpectNo("UnMuteByRatingPin"));
}

TEST_F(PlayerTest, UnlocksAProgrammeThatIsLockedLater)
{
    auto scenario = m_television.Scenario(R"(
        0.2 lock programme
        0.2 expect UnMuteByRatingPin within 5
        )");
    EXPECT_TRUE(m_player.UnlockWhenLocked(std::chrono::seconds(10)));
    EXPECT_TRUE(scenario.Wait());
}

} // namespace
