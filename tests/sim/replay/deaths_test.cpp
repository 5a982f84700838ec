// SPDX-License-Identifier: MIT
#include "ReplayTest.h"

namespace zviptv::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr char Helper[] = "org.corvel.zviptvapi.dbushelper";

class ReplayedDeaths : public Replaying
{
protected:
    std::string Audio(Application& application)
    {
        return application
            .Ask("BROADCASTDATA", {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "0"}})
            .Value("audio");
    }
};

TEST_F(ReplayedDeaths, AndReturnsHaveTheRecordedTimesAfterTheFirstCall)
{
    Recording().Owner(0, "", ":1.2");
    Recording().Exchange(7000, "BROADCASTDATA", AskAudio("0"), Answered("before"));
    Recording().Owner(7400, ":1.2", "");
    Recording().Owner(7700, "", ":1.2");
    Recording().Exchange(8000, "BROADCASTDATA", AskAudio("0"), Answered("after"));
    Replay();
    Application application;
    auto const begin = steady_clock::now();
    application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio(application), "before");
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, false));
    auto const death = steady_clock::now();
    EXPECT_GE(death - begin, milliseconds(395));
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, true));
    EXPECT_GE(steady_clock::now() - death, milliseconds(250));
    EXPECT_TRUE(m_remote->WaitForSignal("Restarted"));
    application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio(application), "after");
    EXPECT_EQ(Audio(application), "after");
    EXPECT_EQ(m_remote->Get("Running"), "true");
}

TEST_F(ReplayedDeaths, FollowTheSpeed)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("before"));
    Recording().Owner(500'000, ":1.2", "");
    Recording().Owner(900'000, "", ":1.2");
    Replay({"--speed", "1000"});
    Application application;
    auto const begin = steady_clock::now();
    application.Announce("BROADCASTDATA");
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, false));
    EXPECT_GE(steady_clock::now() - begin, milliseconds(495));
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, true));
}

TEST_F(ReplayedDeaths, HaveTheRecordedTimesWithoutCalls)
{
    Recording().Owner(0, "", ":1.2");
    Recording().Owner(300, ":1.2", "");
    Recording().Owner(400, "", ":1.2");
    Recording().Exchange(500, "BROADCASTDATA", AskAudio("0"), Answered("second life"));
    Replay();
    EXPECT_TRUE(m_remote->WaitForSignal("Restarted"));
    Application application;
    application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio(application), "second life");
}

TEST_F(ReplayedDeaths, MayBePermanent)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("before"));
    Recording().Owner(100, ":1.2", "");
    Recording().Add(1200, MadeOwnerChange(":1.5", ":1.5", ""));
    Replay();
    Application application;
    application.Announce("BROADCASTDATA");
    ASSERT_TRUE(m_watcher.WaitForOwner(Helper, false));
    EXPECT_TRUE(m_remote->WaitForSignal("Died"));
    ASSERT_EQ(m_remote->Call("Restart"), Done);
    application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio(application), "before");
}

/// It is the end of the session that was recorded.
TEST_F(ReplayedDeaths, AtTheEndOfTheRecordingAreNotReplayed)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("before"));
    Recording().Owner(10, ":1.2", "");
    Recording().Add(20, MadeOwnerChange(":1.5", ":1.5", ""));
    Recording().Save();
    Replay();
    Application application;
    application.Announce("BROADCASTDATA");
    EXPECT_FALSE(m_watcher.WaitForOwner(Helper, false, milliseconds(300)));
    EXPECT_EQ(Audio(application), "before");
}

TEST_F(ReplayedDeaths, BeginTheNextLifeAlsoOnRequest)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("first life"));
    Recording().Owner(600'000, ":1.2", "");
    Recording().Owner(600'001, "", ":1.2");
    Recording().Exchange(600'002, "BROADCASTDATA", AskAudio("0"), Answered("second life"));
    Replay();
    Application application;
    application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio(application), "first life");
    for (int i = 0; i < 2; ++i) { // the last life again afterwards
        ASSERT_EQ(m_remote->Call("Restart"), Done);
        application.Announce("BROADCASTDATA");
        EXPECT_EQ(Audio(application), "second life");
    }
    ASSERT_EQ(m_remote->Call("Reset"), Done);
    EXPECT_EQ(Audio(application), "first life");
}

} // namespace
} // namespace zviptv::test
