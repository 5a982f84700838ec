// SPDX-License-Identifier: MIT
#include "NaiveReassembly.h"
#include "StreamTestSupport.h"

#include "stream/VideoFormat.h"

#include <gtest/gtest.h>

using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

char const* const File = ZVIPTV_SAMPLE_FILE;

double Seconds(StreamTime time)
{
    return std::chrono::duration<double>(time).count();
}

void ExpectPage(TeletextEntry const& entry, char const* language, int type, int magazine, int page)
{
    EXPECT_EQ(entry.pid, 0x104);
    EXPECT_EQ(entry.page.language, language);
    EXPECT_EQ(entry.page.type, type);
    EXPECT_EQ(entry.page.magazine, magazine);
    EXPECT_EQ(entry.page.page, page);
}

} // namespace

TEST(Sample, AnnouncesItsStreams)
{
    Demux demux{std::string(File)};
    ASSERT_EQ(demux.Programmes().size(), 1u);
    Programme const& programme = demux.Programmes()[0];
    EXPECT_EQ(programme.number, 1);
    EXPECT_EQ(programme.name, "ZV Sample One");
    EXPECT_EQ(programme.provider, "ZV");
    EXPECT_EQ(programme.pmtPid, 0x1000);
    EXPECT_EQ(programme.pcrPid, 0x100);

    ASSERT_EQ(programme.video.size(), 1u);
    EXPECT_EQ(programme.video[0].pid, 0x100);
    EXPECT_EQ(programme.video[0].codec, VideoCodec::H264);
    ASSERT_EQ(programme.audio.size(), 2u);
    EXPECT_EQ(programme.audio[0].pid, 0x101);
    EXPECT_EQ(programme.audio[0].language, "eng");
    EXPECT_EQ(programme.audio[0].codec, AudioCodec::Mpeg);
    EXPECT_EQ(programme.audio[1].pid, 0x102);
    EXPECT_EQ(programme.audio[1].language, "deu");
    ASSERT_EQ(programme.subtitles.size(), 1u);
    EXPECT_EQ(programme.subtitles[0].pid, 0x103);
    EXPECT_EQ(programme.subtitles[0].page.language, "eng");
    EXPECT_EQ(programme.subtitles[0].page.type, 0x10);
    EXPECT_EQ(programme.subtitles[0].page.compositionPage, 1);

    ASSERT_EQ(programme.teletext.size(), 3u);
    ExpectPage(programme.teletext[0], "eng", 1, 1, 0x00);
    ExpectPage(programme.teletext[1], "eng", 2, 8, 0x88);
    ExpectPage(programme.teletext[2], "deu", 5, 8, 0x89);
    ASSERT_EQ(programme.arib.size(), 1u);
    EXPECT_EQ(programme.arib[0].pid, 0x105);
    EXPECT_FALSE(programme.arib[0].superimpose);
    EXPECT_EQ(programme.arib[0].componentTag, 0x30);
    EXPECT_EQ(programme.arib[0].dataComponent, 0x0008);
}

TEST(Sample, ReturnsEveryPesPacketUnchanged)
{
    Bytes const whole = ReadWholeFile(File);
    Demux demux{std::string(File)};
    auto const events = Drain(demux);
    std::map<std::uint16_t, std::size_t> const counts{{0x100, 300}, {0x101, 34}, {0x102, 34},
                                                      {0x103, 10},  {0x104, 14}, {0x105, 14}};
    for (auto const& [pid, count] : counts) {
        auto const packets = PesOf(events, pid);
        EXPECT_EQ(packets.size(), count) << pid;
        EXPECT_TRUE(packets == ReassembleNaively(whole, pid)) << pid;
    }
    EXPECT_EQ(events.size(), 406u);
    EXPECT_EQ(demux.Packets(), whole.size() / 188);
}

TEST(Sample, LastsTwelveSecondsWithTheClockAheadOfTheStamps)
{
    Demux demux{std::string(File)};
    auto const events = Drain(demux);
    StreamTime last{};
    for (Event const& event : events) {
        EXPECT_GE(event.at.time, last);
        last = event.at.time;
        auto const* pes = AsPes(event);
        ASSERT_TRUE(pes && pes->pts);
        auto const decoded = static_cast<double>(pes->dts.value_or(*pes->pts)) / 90'000;
        auto const now = static_cast<double>(event.at.stc) / 27'000'000;
        EXPECT_GT(decoded, now) << "too late to be decoded";
        EXPECT_LT(decoded, now + 2);
    }
    EXPECT_NEAR(Seconds(last), 12.0, 0.2);
    EXPECT_EQ(demux.FirstPts(0x100), 133'200u);
    EXPECT_EQ(demux.FirstPts(0x103), 223'200u) << "a second later";
    EXPECT_EQ(demux.FirstPts(0x104), 178'200u) << "half a second later";
    EXPECT_EQ(demux.FirstPts(0x105), 178'200u);
}

TEST(Sample, LoopsWithoutAGap)
{
    Demux demux{std::string(File)};
    std::vector<std::vector<Bytes>> passes;
    std::vector<StreamTime> starts;
    StreamTime last{};
    for (int pass = 0; pass < 3; ++pass) {
        auto const events = Drain(demux);
        starts.push_back(events.front().at.time);
        for (Event const& event : events) {
            EXPECT_GE(event.at.time, last);
            last = event.at.time;
        }
        passes.push_back(PesOf(events, 0x101));
        demux.Rewind();
    }
    EXPECT_TRUE(passes[0] == passes[1] && passes[1] == passes[2]);
    EXPECT_NEAR(Seconds(starts[1] - starts[0]), 12.0, 0.2);
    EXPECT_NEAR(Seconds(starts[2] - starts[1]), Seconds(starts[1] - starts[0]), 0.001);
    EXPECT_EQ(demux.Counters(0x101)->damaged, 0u);
}

TEST(Sample, ReportsItsPictureFormat)
{
    Demux demux{std::string(File)};
    auto const events = Drain(demux);
    auto const format = ParseVideoFormat(VideoCodec::H264, PesOf(events, 0x100).at(0));
    ASSERT_TRUE(format);
    EXPECT_EQ(format->width, 320u);
    EXPECT_EQ(format->height, 180u);
    EXPECT_EQ(format->frameRate.numerator, 25u);
    EXPECT_EQ(format->frameRate.denominator, 1u);
    EXPECT_EQ(format->displayAspect.numerator, 16u);
    EXPECT_EQ(format->displayAspect.denominator, 9u);
    EXPECT_FALSE(format->interlaced);
}

TEST(Sample, IsSmallAndComplete)
{
    Bytes const whole = ReadWholeFile(File);
    EXPECT_LT(whole.size(), 600u * 1024u);
    EXPECT_EQ(whole.size() % 188, 0u);
    EXPECT_EQ(PidsOf(whole), (std::vector<std::uint16_t>{0x0000, 0x0011, 0x0100, 0x0101, 0x0102, 0x0103,
                                                         0x0104, 0x0105, 0x1000}));
}

TEST(Demux, ReportsWhyAFileCannotBePlayed)
{
    EXPECT_THROW(Demux(std::string("/nowhere/at/all.ts")), StreamError);
    EXPECT_THROW(Demux(std::string("/dev/null")), StreamError);
}
