// SPDX-License-Identifier: MIT
#include "StreamTestSupport.h"

#include <gtest/gtest.h>

using namespace zviptv;
using namespace zviptv::sim;
using namespace zviptv::test;

namespace {

/// The programme that a PMT of these entries makes, through packets and tables as in a real stream.
Programme ProgrammeOf(std::vector<PmtStream> const& streams)
{
    StreamBuilder builder;
    builder.Section(0x0000, MakePat({{1, 0x1000}})).Section(0x1000, MakePmt(1, 0x100, streams));
    ProgrammeTable table;
    ForEachPacket(builder.Stream(), [&](TsPacket const& packet) { table.Push(packet); });
    return table.Programmes().empty() ? Programme{} : table.Programmes().front();
}

StreamKind KindOf(std::uint8_t type, Bytes const& descriptors = {})
{
    return ProgrammeOf({{type, 0x100, descriptors}}).streams.at(0).kind;
}

AudioCodec AudioOf(std::uint8_t type, Bytes const& descriptors = {})
{
    return ProgrammeOf({{type, 0x100, descriptors}}).audio.at(0).codec;
}

VideoCodec VideoOf(std::uint8_t type, Bytes const& descriptors = {})
{
    return ProgrammeOf({{type, 0x100, descriptors}}).video.at(0).codec;
}

} // namespace

TEST(Programme, RecognisesVideoByItsStreamType)
{
    EXPECT_EQ(VideoOf(0x01), VideoCodec::Mpeg1);
    EXPECT_EQ(VideoOf(0x02), VideoCodec::Mpeg2);
    EXPECT_EQ(VideoOf(0x10), VideoCodec::Mpeg4);
    EXPECT_EQ(VideoOf(0x1B), VideoCodec::H264);
    EXPECT_EQ(VideoOf(0x24), VideoCodec::Hevc);
    EXPECT_EQ(VideoOf(0x06, {0x05, 4, 'H', 'E', 'V', 'C'}), VideoCodec::Hevc);
}

TEST(Programme, RecognisesAudioByItsStreamType)
{
    EXPECT_EQ(AudioOf(0x03), AudioCodec::Mpeg);
    EXPECT_EQ(AudioOf(0x04), AudioCodec::Mpeg);
    EXPECT_EQ(AudioOf(0x0F), AudioCodec::AacAdts);
    EXPECT_EQ(AudioOf(0x11), AudioCodec::AacLatm);
    EXPECT_EQ(AudioOf(0x81), AudioCodec::Ac3);
    EXPECT_EQ(AudioOf(0x87), AudioCodec::EnhancedAc3);
}

TEST(Programme, RecognisesPrivateAudioByItsDescriptor)
{
    EXPECT_EQ(AudioOf(0x06, {0x6A, 1, 0x00}), AudioCodec::Ac3);
    EXPECT_EQ(AudioOf(0x06, {0x7A, 1, 0x00}), AudioCodec::EnhancedAc3);
    EXPECT_EQ(AudioOf(0x06, {0x7B, 1, 0x00}), AudioCodec::Dts);
    EXPECT_EQ(AudioOf(0x06, {0x7C, 1, 0x00}), AudioCodec::Aac);
    EXPECT_EQ(AudioOf(0x06, {0x05, 4, 'A', 'C', '-', '3'}), AudioCodec::Ac3);
    EXPECT_EQ(AudioOf(0x06, {0x05, 4, 'E', 'A', 'C', '3'}), AudioCodec::EnhancedAc3);
    EXPECT_EQ(AudioOf(0x06, {0x05, 4, 'D', 'T', 'S', '2'}), AudioCodec::Dts);
    EXPECT_EQ(AudioOf(0x06, {0x0A, 4, 'e', 'n', 'g', 0, 0x6A, 1, 0}), AudioCodec::Ac3)
        << "any place in the list";
    EXPECT_EQ(KindOf(0x06, {0x05, 3, 'A', 'C', '-'}), StreamKind::Other) << "cut off";
}

TEST(Programme, ListsTheLanguagesOfAudio)
{
    auto const programme = ProgrammeOf({{0x03, 0x101, {0x52, 1, 0x42, 0x0A, 4, 'e', 'n', 'g', 2}},
                                        {0x03, 0x102, {0x0A, 8, 'd', 'e', 'u', 0, 'f', 'r', 'a', 0}},
                                        {0x03, 0x103, {}}});
    ASSERT_EQ(programme.audio.size(), 3u);
    EXPECT_EQ(programme.audio[0].language, "eng");
    EXPECT_EQ(programme.audio[0].audioType, 2);
    EXPECT_EQ(programme.audio[0].componentTag, 0x42);
    EXPECT_EQ(programme.audio[1].language, "deu");
    ASSERT_EQ(programme.audio[1].languages.size(), 2u) << "dual mono";
    EXPECT_EQ(programme.audio[1].languages[1].language, "fra");
    EXPECT_FALSE(programme.audio[1].componentTag);
    EXPECT_EQ(programme.audio[2].language, "");
}

TEST(Programme, PrefersTheLanguageOfASupplementaryAudioDescriptor)
{
    Bytes const descriptors{0x0A, 4, 'q', 'a', 'd', 0, 0x7F, 5, 0x06, 0x85, 'f', 'r', 'a', 0x7A, 1, 0xD2};
    auto const audio = ProgrammeOf({{0x06, 0x101, descriptors}}).audio.at(0);
    EXPECT_EQ(audio.language, "fra");
    EXPECT_EQ(audio.languages.at(0).language, "qad");
}

TEST(Programme, ListsEveryTeletextEntryOfEveryDescriptor)
{
    Bytes const descriptors{0x52, 1,   0x07, 0x56, 15,   'd',  'e',  'u', 0x09, 0x00, 'd', 'e',  'u', 0x11,
                            0x50, 'e', 'n',  'g',  0x28, 0x88, 0x46, 5,   'f',  'r',  'a', 0x13, 0x01};
    auto const programme = ProgrammeOf({{0x06, 0x120, descriptors}});
    ASSERT_EQ(programme.teletext.size(), 4u);
    EXPECT_EQ(programme.streams[0].kind, StreamKind::Teletext);
    for (auto const& entry : programme.teletext) {
        EXPECT_EQ(entry.pid, 0x120);
        EXPECT_EQ(entry.componentTag, 0x07);
    }
    EXPECT_EQ(programme.teletext[1].page.page, 0x50);
    EXPECT_EQ(programme.teletext[2].page.language, "eng");
    EXPECT_FALSE(programme.teletext[2].vbi);
    EXPECT_TRUE(programme.teletext[3].vbi);
    EXPECT_EQ(programme.teletext[3].page.magazine, 3);
}

TEST(Programme, ListsEverySubtitleEntryOfADescriptor)
{
    Bytes const descriptors{0x59, 24, 'e', 'n', 'g', 0x10, 0,   1,   0,    1, 'd', 'e', 'u',
                            0x10, 0,  2,   0,   1,   'f',  'r', 'a', 0x20, 0, 3,   0,   1};
    auto const programme = ProgrammeOf({{0x06, 0x130, descriptors}});
    ASSERT_EQ(programme.subtitles.size(), 3u);
    EXPECT_EQ(programme.streams[0].kind, StreamKind::Subtitle);
    EXPECT_EQ(programme.subtitles[2].pid, 0x130);
    EXPECT_EQ(programme.subtitles[2].page.language, "fra");
    EXPECT_EQ(programme.subtitles[2].page.type, 0x20);
    EXPECT_EQ(programme.subtitles[2].page.compositionPage, 3);
}

TEST(Programme, RecognisesAribTextByItsDataComponent)
{
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x30, 0xFD, 3, 0x00, 0x08, 0x3D}), StreamKind::AribCaption);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x38, 0xFD, 3, 0x00, 0x08, 0x3C}), StreamKind::AribSuperimpose);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x87, 0xFD, 3, 0x00, 0x12, 0xAD}), StreamKind::AribCaption);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x88, 0xFD, 3, 0x00, 0x12, 0xAD}), StreamKind::AribSuperimpose);
    EXPECT_EQ(KindOf(0x06, {0xFD, 2, 0x00, 0x08}), StreamKind::AribCaption) << "no tag";
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x30, 0xFD, 2, 0x00, 0x0C}), StreamKind::Other)
        << "another data component";
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x30, 0xFD, 1, 0x00}), StreamKind::Other) << "cut off";
}

TEST(Programme, RecognisesAribTextByItsComponentTag)
{
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x30}), StreamKind::AribCaption);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x37}), StreamKind::AribCaption);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x38}), StreamKind::AribSuperimpose);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x3F}), StreamKind::AribSuperimpose);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x2F}), StreamKind::Other);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x40}), StreamKind::Other);
    EXPECT_EQ(KindOf(0x0D, {0x52, 1, 0x30}), StreamKind::Sections) << "not private PES";
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x30, 0x05, 4, 'K', 'L', 'V', 'A'}), StreamKind::Other);
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x30, 0x6A, 1, 0x00}), StreamKind::Audio)
        << "announced as something else";
    EXPECT_EQ(KindOf(0x06, {0x52, 1, 0x30, 0x59, 8, 'e', 'n', 'g', 0x10, 0, 1, 0, 1}), StreamKind::Subtitle);
}

TEST(Programme, ListsAribTracks)
{
    auto const programme = ProgrammeOf(
        {{0x06, 0x145, {0x52, 1, 0x30, 0xFD, 3, 0x00, 0x08, 0x3D}}, {0x06, 0x146, {0x52, 1, 0x39}}});
    ASSERT_EQ(programme.arib.size(), 2u);
    EXPECT_EQ(programme.arib[0].pid, 0x145);
    EXPECT_FALSE(programme.arib[0].superimpose);
    EXPECT_EQ(programme.arib[0].componentTag, 0x30);
    EXPECT_EQ(programme.arib[0].dataComponent, 0x0008);
    EXPECT_TRUE(programme.arib[1].superimpose);
    EXPECT_FALSE(programme.arib[1].dataComponent);
}

TEST(Programme, KeepsTheOrderOfThePmt)
{
    auto const programme =
        ProgrammeOf({{0x03, 0x300, {}}, {0x1B, 0x100, {}}, {0x03, 0x200, {}}, {0x0D, 0x1FF, {}}});
    ASSERT_EQ(programme.streams.size(), 4u);
    EXPECT_EQ(programme.streams[0].pid, 0x300);
    EXPECT_EQ(programme.streams[1].pid, 0x100);
    EXPECT_EQ(programme.streams[2].pid, 0x200);
    EXPECT_EQ(programme.streams[3].pid, 0x1FF);
    EXPECT_EQ(programme.audio.at(0).pid, 0x300);
    EXPECT_EQ(programme.audio.at(1).pid, 0x200);
}

TEST(Programme, KeepsDescriptorsAsSent)
{
    auto const programme = ProgrammeOf({{0x1B, 0x100, {0x52, 1, 0x55, 0xE0, 3, 1, 2, 3}}});
    auto const& descriptors = programme.streams.at(0).descriptors;
    ASSERT_EQ(descriptors.size(), 2u);
    EXPECT_EQ(descriptors[1].tag, 0xE0);
    EXPECT_EQ(descriptors[1].data, (Bytes{1, 2, 3}));
    EXPECT_EQ(programme.streams[0].componentTag, 0x55);
}
