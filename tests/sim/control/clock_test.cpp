// SPDX-License-Identifier: MIT
#include "Remote.h"

namespace zviptv::test {
namespace {

/// One clock: position, guide and the time of GetFirstPTS move together.
class SimulatorClock : public ControlTest
{
protected:
    struct Times
    {
        double position;
        double guide;
        double milliseconds; ///< of GetFirstPTS
    };

    Times Read()
    {
        m_application.Announce("PLAYERCONTROL");
        WireMessage const reply = m_application.Ask("PLAYERCONTROL", {{"functionname", "GetFirstPTS"}});
        return {m_remote->Number("Position"), m_remote->Number("GuideTime"),
                std::stod(reply.Value("currenttime"))};
    }

    Application m_application;
};

TEST_F(SimulatorClock, JumpsWithASeek)
{
    StartControlled({"--loop", "--time", "1774735200"});
    ASSERT_TRUE(WaitUntil([this] { return m_remote->Number("Duration") > 0; }, Patience));
    ASSERT_EQ(m_remote->Call("Pause"), Done);
    Times const before = Read();
    ASSERT_EQ(m_remote->Call("Seek", "(9.0,)"), Done);
    Times const after = Read();
    EXPECT_EQ(after.position, 9.0);
    EXPECT_NEAR(after.guide - before.guide, 9.0 - before.position, 1.0); // whole seconds
    EXPECT_NEAR(after.milliseconds - before.milliseconds, 1000 * (9.0 - before.position), 1.0);
    ASSERT_EQ(m_remote->Call("Seek", "(1.5,)"), Done);
    Times const back = Read();
    EXPECT_EQ(back.position, 1.5);
    EXPECT_NEAR(after.milliseconds - back.milliseconds, 7500, 1.0);
}

TEST_F(SimulatorClock, ASeekBeyondTheEndIsRefused)
{
    StartControlled();
    ASSERT_TRUE(WaitUntil([this] { return m_remote->Number("Duration") > 0; }, Patience));
    EXPECT_EQ(m_remote->Call("Seek", "(12.5,)"),
              std::string(Invalid) + "'12.500' is beyond the end: use 0 to 11.986");
    EXPECT_EQ(m_remote->Call("Seek", "(-1.0,)"),
              std::string(Invalid) + "'-1.0' is not a position in seconds, 0 to 1000000");
}

TEST_F(SimulatorClock, RunsAtTheSpeed)
{
    StartControlled({"--loop", "--time", "1774735200", "--speed", "1000"});
    // Half an hour takes 1.8 seconds.
    EXPECT_TRUE(WaitUntil([this] { return m_remote->Number("GuideTime") > 1774735200 + 1800; },
                          std::chrono::seconds(10)));
}

/// The first packet after a seek is the one that a player from the start would hand out there.
TEST_F(SimulatorClock, ASeekIsExactToThePacket)
{
    StartControlled({"--wait-for", "1", "--pes", "257"});
    Application all;
    auto const subscribe = [](Application& application) {
        application.Announce("IPTVDATASUBSCRIBER");
        application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    };
    ASSERT_EQ(m_remote->Call("SetSpeed", "(100.0,)"), Done);
    subscribe(all);
    ASSERT_TRUE(m_remote->WaitFor("SourceState", "'ended'"));
    ASSERT_TRUE(all.WaitForPackets("257", 34));
    std::vector<std::string> const whole = all.Packets("257");

    ASSERT_EQ(m_remote->Call("Pause"), Done);
    subscribe(m_application);
    ASSERT_EQ(m_remote->Call("Seek", "(5.0,)"), Done);
    ASSERT_EQ(m_remote->Call("Play"), Done);
    ASSERT_TRUE(m_remote->WaitFor("SourceState", "'ended'"));
    ASSERT_TRUE(m_application.WaitForPackets("257", 21));
    std::vector<std::string> const rest = m_application.Packets("257");
    EXPECT_EQ(rest.size(), 21U); // of 34 in 12 seconds
    EXPECT_TRUE(std::equal(rest.rbegin(), rest.rend(), whole.rbegin()));
}

TEST_F(SimulatorClock, ASeekWaitsForPlayToBegin)
{
    StartControlled({"--wait-for", "1"});
    EXPECT_EQ(m_remote->Get("SourceState"), "'starting'");
    EXPECT_EQ(m_remote->Call("Seek", "(5.0,)"),
              std::string(Invalid) + "play has not begun: --wait-for still waits for applications");
}

} // namespace
} // namespace zviptv::test
