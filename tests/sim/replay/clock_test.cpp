// SPDX-License-Identifier: MIT
#include "ReplayTest.h"

namespace zviptv::test {
namespace {

using std::chrono::hours;

/// A television without a battery begins in 1970 and gets the time from the network.
constexpr hours SinceThe1970s = hours(24) * 20'000;

/// Recordings of a television whose clock is set meanwhile.
class ReplayClock : public Replaying
{
protected:
    void Subscribe()
    {
        Recording().Exchange(
            0, "IPTVDATASUBSCRIBER",
            Entries({{"functionname", "requestCaptionCB"}, {"handleID", "256"}, {"on", "1"}}),
            Entries({{"result_internal", "1"}}));
    }

    /// Whether an application that subscribes gets this caption.
    static bool Receives(std::string const& data)
    {
        Application application;
        application.Announce("IPTVDATASUBSCRIBER");
        application.Ask("IPTVDATASUBSCRIBER",
                        {{"functionname", "requestCaptionCB"}, {"handleID", "256"}, {"on", "1"}});
        return application.Peer()
            .WaitFor([&data](WireMessage const& message) { return message.Value("captionData") == data; })
            .has_value();
    }
};

TEST_F(ReplayClock, SettingDoesNotDelayAReply)
{
    Recording().Ask(0, "BROADCASTDATA", AskAudio("0"));
    Recording().SetClock(SinceThe1970s);
    Recording().Reply(1, Answered("at once"));
    Replay();
    Application application;
    application.Announce("BROADCASTDATA");
    EXPECT_EQ(
        application.Ask("BROADCASTDATA", {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "0"}})
            .Value("audio"),
        "at once");
}

TEST_F(ReplayClock, SettingForwardDoesNotDelayPushes)
{
    Subscribe();
    Recording().Caption(10, "before");
    Recording().SetClock(SinceThe1970s);
    Recording().Caption(20, "after");
    Replay();
    EXPECT_TRUE(Receives("after"));
}

TEST_F(ReplayClock, SettingBackwardDoesNotLosePushes)
{
    Subscribe();
    Recording().Caption(10, "before");
    Recording().SetClock(-SinceThe1970s);
    Recording().Caption(20, "after");
    Replay({"--speed", "0.01"});
    EXPECT_TRUE(Receives("after"));
}

TEST_F(ReplayClock, SettingDoesNotDelayTheReturnOfTheService)
{
    Recording().Owner(0, "", ":1.2");
    Recording().Exchange(1, "BROADCASTDATA", AskAudio("0"), Answered("first life"));
    Recording().Owner(200, ":1.2", "");
    Recording().SetClock(SinceThe1970s);
    Recording().Owner(300, "", ":1.2");
    Recording().Exchange(400, "BROADCASTDATA", AskAudio("0"), Answered("second life"));
    Replay();
    Application application;
    application.Announce("BROADCASTDATA");
    ASSERT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
    EXPECT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", true));
}

} // namespace
} // namespace zviptv::test
