// SPDX-License-Identifier: MIT
#include "ReplayTest.h"

namespace zviptv::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;

/// An application that records its captions and their times.
class Viewer
{
public:
    Viewer() { m_application.Announce("IPTVDATASUBSCRIBER"); }

    void Turn(std::string const& on)
    {
        m_begin = steady_clock::now(); // on a busy machine, the answer may be read late
        WireMessage const reply = m_application.Ask(
            "IPTVDATASUBSCRIBER", {{"functionname", "requestCaptionCB"}, {"handleID", "256"}, {"on", on}});
        EXPECT_EQ(reply.Value("result_internal"), "1");
    }

    bool WaitForCaption(std::string const& data)
    {
        return m_application.Peer()
            .WaitFor([&data](WireMessage const& message) { return message.Value("captionData") == data; })
            .has_value();
    }

    milliseconds SinceSubscription() const
    {
        return std::chrono::duration_cast<milliseconds>(steady_clock::now() - m_begin);
    }

    std::vector<std::string> Captions()
    {
        std::vector<std::string> captions;
        for (WireMessage const& message : m_application.Peer().Received().All()) {
            if (message.Value("functionname") == "CaptionCB") {
                captions.push_back(message.Value("captionData"));
            }
        }
        return captions;
    }

    WirePeer& Peer() { return m_application.Peer(); }

private:
    Application m_application;
    steady_clock::time_point m_begin;
};

class ReplayedPushes : public Replaying
{
protected:
    void Subscribe(int time, std::string const& application = ":1.5")
    {
        Recording().Ask(time, "IPTVDATASUBSCRIBER",
                        Entries({{"functionname", "requestCaptionCB"}, {"handleID", "256"}, {"on", "1"}}),
                        application);
        Recording().Reply(time, Entries({{"result_internal", "1"}}));
    }

    void Unsubscribe(int time, std::string const& application = ":1.5")
    {
        Recording().Ask(time, "IPTVDATASUBSCRIBER",
                        Entries({{"functionname", "requestCaptionCB"}, {"handleID", "256"}, {"on", "0"}}),
                        application);
        Recording().Reply(time, Entries({{"result_internal", "1"}}));
    }
};

TEST_F(ReplayedPushes, HaveTheRecordedTimesAfterTheSubscription)
{
    Recording().Exchange(0, "BROADCASTDATA", AskAudio("0"), Answered("ten minutes before"));
    Subscribe(600'000);
    Recording().Caption(600'000, "at once");
    Recording().Caption(600'500, "later");
    Replay();
    Viewer viewer;
    viewer.Turn("1");
    ASSERT_TRUE(viewer.WaitForCaption("at once"));
    ASSERT_TRUE(viewer.WaitForCaption("later"));
    EXPECT_GE(viewer.SinceSubscription(), milliseconds(490));
}

TEST_F(ReplayedPushes, HaveTheRecordedEntries)
{
    Subscribe(0);
    Recording().Caption(10, PatternBytes(70000));
    Replay();
    Viewer viewer;
    viewer.Turn("1");
    auto const push = viewer.Peer().WaitFor(
        [](WireMessage const& message) { return message.Value("functionname") == "CaptionCB"; });
    ASSERT_TRUE(push);
    EXPECT_EQ(push->path, "/org/corvel/zviptvapi/DbusCommunication/IPTVDATASUBSCRIBER");
    EXPECT_EQ(push->member, "SendSignal");
    EXPECT_EQ(push->entries, Entries({{"functionname", "CaptionCB"},
                                      {"captionDataSize", "70000"},
                                      {"captionType", "4"},
                                      {"captionData", PatternBytes(70000)}}));
}

TEST_F(ReplayedPushes, FollowTheSpeed)
{
    Subscribe(0);
    Recording().Caption(600'000, "after ten minutes");
    Replay({"--speed", "1000"});
    Viewer viewer;
    viewer.Turn("1");
    ASSERT_TRUE(viewer.WaitForCaption("after ten minutes"));
    EXPECT_GE(viewer.SinceSubscription(), milliseconds(590));
}

TEST_F(ReplayedPushes, AreRepeatedForEachSubscriber)
{
    Subscribe(0);
    Recording().Caption(10, "one");
    Unsubscribe(20);
    Recording().Caption(21, "on its way");
    Subscribe(30);
    Recording().Caption(40, "two");
    Recording().Caption(41, "end");
    Replay();
    Viewer first;
    first.Turn("1");
    ASSERT_TRUE(first.WaitForCaption("one"));
    for (int i = 0; i < 2; ++i) {
        Viewer next;
        next.Turn("1");
        ASSERT_TRUE(next.WaitForCaption("end"));
        EXPECT_THAT(next.Captions(), ElementsAre("two", "end"));
    }
    EXPECT_THAT(first.Captions(), ElementsAre("one"));
}

TEST_F(ReplayedPushes, EndWithTheSubscription)
{
    Subscribe(0);
    Recording().Caption(10, "first");
    Recording().Caption(300, "second");
    Recording().Caption(310, "end");
    Unsubscribe(400);
    Replay();
    Viewer ends;
    Viewer stays;
    ends.Turn("1");
    ASSERT_TRUE(ends.WaitForCaption("first"));
    ends.Turn("0");
    stays.Turn("1");
    ASSERT_TRUE(stays.WaitForCaption("end"));
    ends.Peer().Sync();
    EXPECT_THAT(ends.Captions(), ElementsAre("first"));
}

TEST_F(ReplayedPushes, StartWithARecordingThatBeginsAfterTheSubscription)
{
    Recording().Caption(0, "first");
    Recording().Caption(20, "second");
    Replay();
    Viewer viewer;
    viewer.Turn("1");
    ASSERT_TRUE(viewer.WaitForCaption("second"));
    EXPECT_THAT(viewer.Captions(), ElementsAre("first", "second"));
}

} // namespace
} // namespace zviptv::test
