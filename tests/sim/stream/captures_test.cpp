// SPDX-License-Identifier: MIT
#include "NaiveReassembly.h"
#include "StreamTestSupport.h"

#include "stream/VideoFormat.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

/// Plays a capture of a real broadcast. Without the captures, the test is skipped.
class Capture : public testing::Test
{
protected:
    void Open(std::string const& name)
    {
        m_path = std::string(ZVIPTV_MEDIA_DIR) + "/" + name;
        if (!std::ifstream(m_path)) {
            GTEST_SKIP() << "no capture " << m_path << " (CMake variable ZVIPTV_MEDIA_DIR)";
        }
        m_demux = std::make_unique<Demux>(m_path);
        m_programme = *m_demux->Current();
        m_events = Drain(*m_demux);
    }

    /// Against the naive reassembly, for every PID of the programme that may carry PES packets.
    void ExpectSameBytes()
    {
        Bytes const whole = ReadWholeFile(m_path);
        std::size_t total = 0;
        for (ElementaryStream const& stream : m_programme.streams) {
            if (stream.kind == StreamKind::Sections) {
                continue;
            }
            auto const packets = PesOf(m_events, stream.pid);
            EXPECT_TRUE(packets == ReassembleNaively(whole, stream.pid)) << stream.pid;
            total += packets.size();
        }
        EXPECT_EQ(m_events.size(), total);
    }

    void ExpectTimesNeverDecrease()
    {
        for (std::size_t i = 1; i < m_events.size(); ++i) {
            EXPECT_LE(m_events[i - 1].at.time, m_events[i].at.time);
        }
    }

    std::string m_path;
    std::unique_ptr<Demux> m_demux;
    Programme m_programme;
    std::vector<Event> m_events;
};

class TeletextCapture : public Capture
{
protected:
    void SetUp() override { Open("dvb-4-audio-teletext.ts"); }
};

class SubtitleCapture : public Capture
{
protected:
    void SetUp() override { Open("dvb-eac3-dvb-subtitles.ts"); }
};

class AribCapture : public Capture
{
protected:
    void SetUp() override { Open("isdb-arib-caption.ts"); }
};

} // namespace

TEST_F(TeletextCapture, AnnouncesItsStreams)
{
    ASSERT_EQ(m_programme.video.size(), 1u);
    EXPECT_EQ(m_programme.video[0].pid, 0x424);
    EXPECT_EQ(m_programme.video[0].codec, VideoCodec::H264);
    ASSERT_EQ(m_programme.audio.size(), 4u);
    std::vector<std::pair<std::uint16_t, std::string>> const wanted{
        {0x425, "fra"}, {0x426, "eng"}, {0x427, "deu"}, {0x42B, "qad"}};
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        EXPECT_EQ(m_programme.audio[i].pid, wanted[i].first);
        EXPECT_EQ(m_programme.audio[i].language, wanted[i].second);
        EXPECT_EQ(m_programme.audio[i].codec, AudioCodec::Mpeg);
    }
    EXPECT_EQ(m_programme.audio[3].audioType, 3) << "for the visually impaired";
    ASSERT_EQ(m_programme.teletext.size(), 2u);
    EXPECT_EQ(m_programme.teletext[0].pid, 0x42C);
    EXPECT_EQ(m_programme.teletext[0].page.language, "fra");
    EXPECT_EQ(m_programme.teletext[0].page.type, 5);
    EXPECT_EQ(m_programme.teletext[0].page.magazine, 8);
    EXPECT_EQ(m_programme.teletext[0].page.page, 0x88);
    EXPECT_EQ(m_programme.teletext[1].page.language, "fra");
    EXPECT_EQ(m_programme.teletext[1].page.type, 2);
    EXPECT_EQ(m_programme.teletext[1].page.magazine, 8);
    EXPECT_EQ(m_programme.teletext[1].page.page, 0x89);
}

TEST_F(TeletextCapture, ReturnsEveryPesPacketUnchanged)
{
    EXPECT_EQ(PesOf(m_events, 0x42C).size(), 916u);
    ExpectSameBytes();
}

TEST_F(TeletextCapture, UsesTimeStampsWithoutAPcr)
{
    ExpectTimesNeverDecrease();
    ASSERT_FALSE(m_events.empty());
    auto const* first = AsPes(m_events.front());
    auto const* last = AsPes(m_events.back());
    ASSERT_TRUE(first->pts && last->pts);
    auto const stamps = static_cast<double>(*last->pts - *first->pts) / 90'000;
    auto const time =
        std::chrono::duration<double>(m_events.back().at.time - m_events.front().at.time).count();
    EXPECT_NEAR(time, stamps, 0.001);
    EXPECT_EQ(m_events.front().at.stc, *first->pts * 300);
}

TEST_F(SubtitleCapture, AnnouncesItsStreams)
{
    EXPECT_FALSE(m_programme.name.empty());
    ASSERT_EQ(m_programme.audio.size(), 3u);
    std::vector<std::pair<std::uint16_t, std::string>> const wanted{
        {0x82, "fre"}, {0x83, "fra"}, {0x84, "qaa"}};
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        EXPECT_EQ(m_programme.audio[i].pid, wanted[i].first);
        EXPECT_EQ(m_programme.audio[i].language, wanted[i].second);
        EXPECT_EQ(m_programme.audio[i].codec, AudioCodec::EnhancedAc3);
    }
    EXPECT_EQ(m_programme.audio[0].componentTag, 2);
    ASSERT_EQ(m_programme.subtitles.size(), 2u);
    EXPECT_EQ(m_programme.subtitles[0].pid, 0x8C);
    EXPECT_EQ(m_programme.subtitles[0].page.type, 0x24);
    EXPECT_EQ(m_programme.subtitles[1].pid, 0x8E);
    EXPECT_EQ(m_programme.subtitles[1].page.type, 0x14);
    EXPECT_EQ(m_programme.subtitles[1].page.language, "fra");
    EXPECT_EQ(m_programme.subtitles[1].page.compositionPage, 1);
    EXPECT_EQ(m_programme.subtitles[1].page.ancillaryPage, 1);
}

TEST_F(SubtitleCapture, ReturnsEveryPesPacketUnchanged)
{
    EXPECT_EQ(PesOf(m_events, 0x78).size(), 29u);
    EXPECT_EQ(PesOf(m_events, 0x82).size(), 5u);
    EXPECT_EQ(PesOf(m_events, 0x83).size(), 5u);
    EXPECT_EQ(PesOf(m_events, 0x84).size(), 5u);
    EXPECT_EQ(PesOf(m_events, 0x8C).size(), 1u);
    EXPECT_EQ(PesOf(m_events, 0x8E).size(), 3u);
    ExpectSameBytes();
    EXPECT_EQ(m_demux->Counters(0x82)->truncated, 1u) << "the capture ends within a packet";
}

TEST_F(SubtitleCapture, UsesItsPcr)
{
    ExpectTimesNeverDecrease();
    for (Event const& event : m_events) {
        auto const* pes = AsPes(event);
        if (!pes->pts) {
            continue;
        }
        auto const ahead =
            (static_cast<double>(pes->dts.value_or(*pes->pts)) - static_cast<double>(event.at.stc) / 300) /
            90'000;
        EXPECT_GT(ahead, -0.2) << "an audio packet holds 192 ms, and may end after its first frame is heard";
        EXPECT_LT(ahead, 5);
    }
}

TEST_F(SubtitleCapture, ReportsItsPictureFormat)
{
    std::optional<VideoFormat> format;
    for (Bytes const& pes : PesOf(m_events, 0x78)) {
        if (!format) {
            format = ParseVideoFormat(VideoCodec::H264, pes);
        }
    }
    ASSERT_TRUE(format);
    EXPECT_EQ(format->width, 1920u);
    EXPECT_EQ(format->height, 1080u);
    EXPECT_EQ(format->frameRate.numerator, 25u);
    EXPECT_EQ(format->frameRate.denominator, 1u);
    EXPECT_EQ(format->displayAspect.numerator, 16u);
    EXPECT_TRUE(format->interlaced);
}

TEST_F(AribCapture, AnnouncesTheSameStreamsInThreeProgrammes)
{
    ASSERT_EQ(m_demux->Programmes().size(), 3u);
    std::vector<std::uint16_t> const numbers{141, 142, 143};
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        Programme const& programme = m_demux->Programmes()[i];
        EXPECT_EQ(programme.number, numbers[i]);
        EXPECT_EQ(programme.pcrPid, 0x100);
        ASSERT_EQ(programme.streams.size(), 8u);
        EXPECT_EQ(programme.video.at(0).pid, 0x140);
        EXPECT_EQ(programme.video[0].codec, VideoCodec::Mpeg2);
        EXPECT_EQ(programme.audio.at(0).pid, 0x141);
        EXPECT_EQ(programme.audio[0].codec, AudioCodec::AacAdts);
        ASSERT_EQ(programme.arib.size(), 2u);
        EXPECT_EQ(programme.arib[0].pid, 0x145);
        EXPECT_EQ(programme.arib[0].componentTag, 0x30);
        EXPECT_EQ(programme.arib[0].dataComponent, 0x0008);
        EXPECT_FALSE(programme.arib[0].superimpose);
        EXPECT_EQ(programme.arib[1].pid, 0x146);
        EXPECT_EQ(programme.arib[1].componentTag, 0x38);
        EXPECT_TRUE(programme.arib[1].superimpose);
    }
}

TEST_F(AribCapture, IsScrambledAndGivesNothing)
{
    EXPECT_TRUE(m_events.empty());
    EXPECT_EQ(m_demux->Counters(0x140)->scrambledPackets, 387u);
    EXPECT_EQ(m_demux->Counters(0x141)->scrambledPackets, 9u);
    EXPECT_EQ(m_demux->Counters(0x140)->delivered, 0u);
    ExpectSameBytes();
}
