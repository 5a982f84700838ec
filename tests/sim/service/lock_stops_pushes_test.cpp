// SPDX-License-Identifier: MIT
#include "SimulatorTest.h"
#include "WaitUntil.h"

namespace zviptv::test {
namespace {

constexpr char Subscriber[] = "IPTVDATASUBSCRIBER";
constexpr char Broadcast[] = "BROADCASTDATA";
constexpr char Player[] = "PLAYERCONTROL";

/// The sample over and over, and an application that wants all of it.
class LockedPushes : public Simulator
{
protected:
    void Begin(std::vector<std::string> const& options)
    {
        std::vector<std::string> all{"--ts", ZVIPTV_SAMPLE_FILE, "--loop", "--speed", "4"};
        all.insert(all.end(), options.begin(), options.end());
        Start(all);
        for (char const* const type : {Player, Broadcast, Subscriber}) {
            m_application.Announce(type);
        }
        for (char const* const function : {"requestPESCB", "requestCaptionCB"}) {
            EXPECT_EQ(Number(m_application.Ask(Subscriber, {{"functionname", function}, {"on", "1"}}),
                             "result_internal"),
                      "1");
        }
    }

    void Unlock(char const* what)
    {
        EXPECT_EQ(
            Number(m_application.Ask(Broadcast, {{"functionname", "SetUnlockedInfo"}, {"ratingInfo", what}}),
                   "result_internal"),
            "1");
    }

    std::size_t Notifications()
    {
        return m_application.Peer().Received().Count(
            [](WireMessage const& message) { return message.member == "SendSignal"; });
    }

    bool WaitForMore(std::size_t count)
    {
        return m_application.Peer().Received().WaitForCount(
            [](WireMessage const& message) { return message.member == "SendSignal"; },
            Notifications() + count);
    }

    /// Until over a hundred packets have been played, as other clocks than that of this test tell.
    void WaitForPackets()
    {
        std::string last;
        for (int changes = 0; changes < 100;) {
            std::string const now =
                Number(m_application.Ask(Player, {{"functionname", "GetSTCCount"}}), "stcCount");
            changes += now == last ? 0 : 1;
            last = now;
            std::this_thread::sleep_for(std::chrono::milliseconds(10)); // asks less often, proves nothing
        }
    }

    Application m_application;
};

TEST_F(LockedPushes, StopWhileTheServiceIsLocked)
{
    Begin({"--lock-service", "--lock-stops-pushes"});
    WaitForPackets();
    EXPECT_EQ(Notifications(), 0U);
    Unlock("2");
    EXPECT_TRUE(WaitForMore(10));
    Unlock("0");
    WaitForPackets(); // what was on its way has come
    std::size_t const before = Notifications();
    WaitForPackets();
    EXPECT_EQ(Notifications(), before);
}

TEST_F(LockedPushes, StopWhileTheProgrammeIsLocked)
{
    Begin({"--guide", ZVIPTV_SAMPLE_GUIDE, "--time", "1774735200", "--rating-limit", "12",
           "--lock-stops-pushes"});
    WaitForPackets();
    EXPECT_EQ(Notifications(), 0U);
    EXPECT_EQ(
        Number(m_application.Ask(Broadcast, {{"functionname", "UnMuteByRatingPin"}}), "result_internal"),
        "1");
    EXPECT_TRUE(WaitForMore(10));
}

TEST_F(LockedPushes, ContinueWithoutTheOption)
{
    Begin({"--lock-service"});
    EXPECT_TRUE(WaitForMore(10));
    EXPECT_EQ(
        Number(m_application.Ask(Broadcast, {{"functionname", "FlagServiceLocked"}}), "outServiceLocked"),
        "1");
}

} // namespace
} // namespace zviptv::test
