// SPDX-License-Identifier: MIT
#include "ReplayTest.h"

#include <chrono>

namespace zviptv::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

class ReplayedAnswers : public Replaying
{
protected:
    std::string Audio(std::string const& index, std::string const& handle = "256")
    {
        return m_application
            .Ask("BROADCASTDATA", {{"functionname", "GetAudio"}, {"handleID", handle}, {"index", index}})
            .Value("audio");
    }

    Application m_application;
};

TEST_F(ReplayedAnswers, FollowTheRecordedOrderAndTheLastIsRepeated)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("first"));
    Recording().Exchange(1, "BROADCASTDATA", AskAudio("1"), Answered("other"));
    Recording().Exchange(2, "BROADCASTDATA", AskAudio("0"), Answered("second"));
    Replay();
    m_application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio("0"), "first");
    EXPECT_EQ(Audio("0"), "second");
    EXPECT_EQ(Audio("0"), "second");
    EXPECT_EQ(Audio("1"), "other");
    ASSERT_EQ(m_remote->Call("Reset"), Done);
    EXPECT_EQ(Audio("0"), "first");
}

TEST_F(ReplayedAnswers, HaveTheRecordedEntriesInTheirOrder)
{
    WireEntries const reply = Entries(
        {{"audio", std::string("\0\xff", 2)}, {"result_internal", "7"}, {"x", "1"}, {"x", "2"}, {"y", "é"}});
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), reply);
    Replay();
    m_application.Announce("BROADCASTDATA");
    EXPECT_EQ(m_application
                  .Ask("BROADCASTDATA", {{"index", "0"}, {"functionname", "GetAudio"}, {"handleID", "256"}})
                  .entries,
              reply);
}

TEST_F(ReplayedAnswers, DependOnTheHandleIfItWasRecorded)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0", "256"), Answered("of 256"));
    Recording().Exchange(1, "BROADCASTDATA", AskAudio("0", "257"), Answered("of 257"));
    Replay();
    m_application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio("0", "257"), "of 257");
    EXPECT_EQ(Audio("0", "256"), "of 256");
    EXPECT_EQ(Audio("0", "300"), "of 256");
}

TEST_F(ReplayedAnswers, DoNotDependOnTheNameOfTheApplication)
{
    Recording().Exchange(0, "PLAYERCONTROL",
                         Entries({{"functionname", "SetAppID"}, {"AppID", "org.example.recorded"}}),
                         Entries({{"result_internal", "5"}}));
    Replay();
    m_application.Announce("PLAYERCONTROL");
    EXPECT_EQ(
        m_application.Ask("PLAYERCONTROL", {{"functionname", "SetAppID"}, {"AppID", "org.example.other"}})
            .Value("result_internal"),
        "5");
}

TEST_F(ReplayedAnswers, MayBeErrors)
{
    Recording().Ask(0, "BROADCASTDATA", AskAudio("0"));
    Recording().Error(1, "org.example.Error.Broken", "the tuner is broken");
    Recording().Exchange(2, "BROADCASTDATA", AskAudio("0"), Answered("works"));
    Replay();
    m_application.Announce("BROADCASTDATA");
    WireMessage const error = m_application.Ask(
        "BROADCASTDATA", {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "0"}});
    EXPECT_EQ(error.errorName, "org.example.Error.Broken");
    EXPECT_THAT(error.strings, testing::ElementsAre("the tuner is broken"));
    EXPECT_EQ(Audio("0"), "works");
}

TEST_F(ReplayedAnswers, MayBeMissing)
{
    Recording().Ask(0, "BROADCASTDATA", AskAudio("0"));
    Recording().Exchange(3000, "BROADCASTDATA", AskAudio("1"), Answered("works"));
    Recording().Ask(3001, "BROADCASTDATA", AskAudio("2")); // the recording ends before an answer could come
    Replay();
    m_application.Announce("BROADCASTDATA");
    WireMessage const none = m_application.Peer().Call(
        {m_watcher.GetNameOwner("org.corvel.zviptvapi.dbushelper"), ChannelPath("BROADCASTDATA"),
         "org.corvel.zviptvapi.DbusCommunication", "Send"},
        AskAudio("0"), {milliseconds(300), false});
    EXPECT_EQ(none.errorName, "org.freedesktop.DBus.Error.NoReply");
    EXPECT_EQ(Audio("1"), "works");
    EXPECT_EQ(m_application
                  .Ask("BROADCASTDATA", {{"functionname", "GetAudio"}, {"handleID", "256"}, {"index", "2"}})
                  .errorName,
              "org.corvel.zviptvapi.Error.NotRecorded");
}

TEST_F(ReplayedAnswers, TakeAsLongAsRecorded)
{
    Recording().Ask(0, "BROADCASTDATA", AskAudio("0"));
    Recording().Reply(400, Answered("late"));
    Replay({"--speed", "100"});
    m_application.Announce("BROADCASTDATA");
    auto const begin = steady_clock::now();
    EXPECT_EQ(Audio("0"), "late");
    EXPECT_GE(steady_clock::now() - begin, milliseconds(400));
}

/// An error of the bus says nothing about the service.
TEST_F(ReplayedAnswers, OfTheBusAreNotReplayed)
{
    Recording().Ask(0, "BROADCASTDATA", AskAudio("0"));
    Recording().Error(1, "org.freedesktop.DBus.Error.ServiceUnknown", "gone", "org.freedesktop.DBus");
    Recording().Exchange(2, "BROADCASTDATA", AskAudio("0"), Answered("works"));
    Replay();
    m_application.Announce("BROADCASTDATA");
    EXPECT_EQ(Audio("0"), "works");
}

TEST_F(ReplayedAnswers, ToAnnouncementsNameTheRunningService)
{
    Recording().Announce(0, "BROADCASTDATA", "y");
    Recording().Reply(1, Pairs({{"dbusname", ":1.2"}}));
    Recording().Announce(2, "IPGUTIL", "y");
    Recording().Reply(3, Pairs({{"dbusname", ""}}));
    Replay();
    std::string const service = m_watcher.GetNameOwner("org.corvel.zviptvapi.dbushelper");
    EXPECT_EQ(m_application.Announce("BROADCASTDATA"), service);
    EXPECT_EQ(m_application.Announce("IPGUTIL"), "");
    EXPECT_EQ(m_application.Announce("PLAYERCONTROL"), service); // was not recorded
}

} // namespace
} // namespace zviptv::test
