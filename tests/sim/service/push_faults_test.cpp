// SPDX-License-Identifier: MIT
#include "Crowd.h"
#include "PushTest.h"
#include "WaitUntil.h"

#include <algorithm>

namespace zviptv::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST_F(FaultyPushes, AreDropped)
{
    Begin({"PESCB=drop,count=5"});
    Subscribe(m_application);
    PlayToTheEnd();
    EXPECT_EQ(Got(DenseVideo), From(2));
    EXPECT_EQ(Got(DenseAudio), From(2));
    EXPECT_EQ(Got(DenseTeletext), From(1));
}

TEST_F(FaultyPushes, AreDuplicated)
{
    Begin({"PESCB=duplicate,count=1", "CaptionCB=duplicate"});
    Subscribe(m_application);
    PlayToTheEnd(2 * Count);
    std::vector<int> video = From(0);
    video.insert(video.begin(), 0);
    EXPECT_EQ(Got(DenseVideo), video);
    EXPECT_EQ(Got(DenseAudio), From(0));
    std::vector<WireMessage> const captions = Notifications("CaptionCB");
    for (std::size_t i = 0; i < captions.size(); i += 2) {
        EXPECT_EQ(captions[i].entries, captions[i + 1].entries);
    }
}

TEST_F(FaultyPushes, AreSwappedWithTheNextOfTheirPid)
{
    Begin({"PESCB=reorder"});
    Subscribe(m_application);
    Play();
    std::vector<int> swapped = From(0);
    for (std::size_t i = 0; i < Count; i += 2) {
        std::swap(swapped[i], swapped[i + 1]);
    }
    for (std::uint16_t const pid : {DenseVideo, DenseAudio, DenseTeletext}) {
        EXPECT_TRUE(m_application.WaitForPackets(std::to_string(pid), Count));
        EXPECT_EQ(Got(pid), swapped);
    }
}

/// The last one of the stream is not kept back.
TEST_F(FaultyPushes, AreReleasedAtTheEndOfTheStream)
{
    Begin({"PESCB=drop,count=1", "PESCB=reorder"}); // 39 are left of video
    Subscribe(m_application);
    Play();
    EXPECT_TRUE(m_application.WaitForPackets(std::to_string(DenseVideo), Count - 1));
    EXPECT_EQ(Got(DenseVideo).back(), 39);
}

TEST_F(FaultyPushes, LoseOrChangeTheNamedValues)
{
    Begin({"PESCB=missing:pesPTS", "PESCB=garbage:pesType", "PESCB=short:pesData,count=119",
           "CaptionCB=garbage:captionDataSize"});
    Subscribe(m_application);
    PlayToTheEnd();
    std::vector<WireMessage> const packets = Notifications("PESCB");
    ASSERT_EQ(packets.size(), 3 * Count);
    for (std::size_t i = 0; i < packets.size(); ++i) {
        EXPECT_FALSE(packets[i].Has("pesPTS"));
        EXPECT_EQ(packets[i].Value("pesType"), "garbage");
        std::size_t const announced = std::stoul(packets[i].Value("pesDataSize"));
        EXPECT_EQ(packets[i].Value("pesData").size(), i < 119 ? announced / 2 : announced);
    }
    for (WireMessage const& caption : Notifications("CaptionCB")) {
        EXPECT_EQ(caption.Value("captionDataSize"), "garbage");
        EXPECT_THAT(caption.Value("captionData"), Not(IsEmpty()));
    }
}

/// Those of the other function are not late.
TEST_F(FaultyPushes, AreDelayedInOrder)
{
    Begin({"PESCB=delay:700"});
    Subscribe(m_application);
    Play();
    ASSERT_TRUE(m_application.WaitForPackets(std::to_string(DenseVideo), 1));
    EXPECT_GE(std::chrono::steady_clock::now() - m_begin, std::chrono::milliseconds(700));
    EXPECT_THAT(Notifications("CaptionCB"), Not(IsEmpty()));
    for (std::uint16_t const pid : {DenseVideo, DenseAudio, DenseTeletext}) {
        EXPECT_TRUE(m_application.WaitForPackets(std::to_string(pid), Count));
        EXPECT_EQ(Got(pid), From(0));
    }
}

TEST_F(FaultyPushes, AreHeldForASecondBeforeABurst)
{
    Begin({"PESCB=burst:10"});
    Subscribe(m_application);
    Play();
    ASSERT_TRUE(m_application.WaitForPackets(std::to_string(DenseVideo), 1));
    EXPECT_GE(std::chrono::steady_clock::now() - m_begin, std::chrono::seconds(1));
    for (std::uint16_t const pid : {DenseVideo, DenseAudio, DenseTeletext}) {
        EXPECT_TRUE(m_application.WaitForPackets(std::to_string(pid), Count));
        EXPECT_EQ(Got(pid), From(0));
    }
}

TEST_F(FaultyPushes, OfOneApplicationAreFaulty)
{
    Begin({"PESCB=drop,application=" + m_application.Peer().Name(),
           "CaptionCB=drop,application=org.example.player"});
    Subscribe(m_application);
    m_other.Announce("PLAYERCONTROL");
    m_other.Ask("PLAYERCONTROL", {{"functionname", "SetAppID"}, {"AppID", "org.example.player"}});
    Subscribe(m_other, false);
    Request(m_other, "requestPESCB");
    EXPECT_TRUE(m_other.WaitForPackets(std::to_string(DenseTeletext), 1));
    EXPECT_TRUE(m_application.Peer().Received().WaitForCount(
        [](WireMessage const& message) { return message.Value("functionname") == "CaptionCB"; }, Count));
    EXPECT_THAT(Notifications("PESCB"), IsEmpty());
    EXPECT_EQ(m_other.Peer().Received().Count(
                  [](WireMessage const& message) { return message.Value("functionname") == "CaptionCB"; }),
              0U);
}

/// Plays once with each of the options, and checks which packets arrive.
class RandomPushes : public FaultyPushes
{
protected:
    std::vector<int> PlayWith(std::vector<std::string> const& options)
    {
        m_simulator.reset();
        EXPECT_TRUE(m_watcher.WaitForOwner("org.corvel.zviptvapi.dbushelper", false));
        m_application.Peer().Received().Clear();
        Begin({"PESCB=drop,probability=0.5"}, options);
        Subscribe(m_application);
        PlayToTheEnd();
        m_errors = m_simulator->Errors();
        return Got(DenseVideo);
    }

    std::string m_errors; ///< of the simulator
};

TEST_F(RandomPushes, AreRepeatedByTheSeedThatIsPrinted)
{
    std::vector<int> const first = PlayWith({});
    std::string const begin = "zviptv-sim: faults are random; --fault-seed ";
    ASSERT_THAT(m_errors, HasSubstr(begin));
    std::size_t const at = m_errors.find(begin) + begin.size();
    std::string const seed = m_errors.substr(at, m_errors.find(' ', at) - at);
    EXPECT_GT(first.size(), 0U);
    EXPECT_LT(first.size(), Count);
    EXPECT_EQ(PlayWith({"--fault-seed", seed}), first);
    EXPECT_THAT(m_errors, HasSubstr(begin + seed + " repeats them\n"));
    EXPECT_NE(PlayWith({"--fault-seed", "1"}), PlayWith({"--fault-seed", "2"}));
}

/// Those that are late take up room in the queue, and no more than there is.
TEST_F(Crowd, LatePushesAreLimitedByTheQueue)
{
    Play({50, 40000, 2}, {"--json", "--fault", "PESCB=delay:600000"});
    Application application;
    application.Announce("IPTVDATASUBSCRIBER");
    application.Ask("IPTVDATASUBSCRIBER", {{"functionname", "requestPESCB"}, {"on", "1"}});
    ASSERT_TRUE(WaitUntil(
        [this] {
            Json::Value const status = Status();
            return status["dropped"].asUInt64() > 0;
        },
        Patience));
    Json::Value const subscriber = Status()["subscribers"][0];
    EXPECT_EQ(subscriber["sent"].asUInt64(), 0U);
    EXPECT_GT(subscriber["queued"].asUInt64(), 100U); // 4 MiB of 40,000 bytes
    EXPECT_LE(subscriber["queued"].asUInt64(), 1024U);
}

} // namespace
} // namespace zviptv::test
