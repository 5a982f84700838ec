// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Descriptors.h"

namespace zviptv::sim {

enum class StreamKind
{
    Video,
    Audio,
    Teletext,
    Subtitle,        ///< DVB subtitles
    AribCaption,     ///< ARIB closed captions
    AribSuperimpose, ///< ARIB superimposed text
    Sections,        ///< carries sections, never PES packets
    Other
};

enum class VideoCodec
{
    Mpeg1,
    Mpeg2,
    Mpeg4, ///< part 2
    H264,
    Hevc
};

enum class AudioCodec
{
    Mpeg, ///< MPEG-1 and MPEG-2 audio, any layer
    AacAdts,
    AacLatm,
    Aac, ///< announced by an AAC descriptor, unknown framing
    Ac3,
    EnhancedAc3,
    Dts
};

/// One entry of a PMT.
struct ElementaryStream
{
    std::uint16_t pid = 0;
    std::uint8_t streamType = 0;
    StreamKind kind = StreamKind::Other;
    std::optional<std::uint8_t> componentTag;
    std::vector<Descriptor> descriptors;
};

struct VideoTrack
{
    std::uint16_t pid = 0;
    VideoCodec codec = VideoCodec::Mpeg2;
    std::optional<std::uint8_t> componentTag;
};

struct AudioTrack
{
    std::uint16_t pid = 0;
    AudioCodec codec = AudioCodec::Mpeg;
    std::string language; ///< of a supplementary audio descriptor, or the first of `languages`; or empty
    std::uint8_t audioType = 0;           ///< that of the first of `languages`
    std::vector<LanguageEntry> languages; ///< all languages of the ISO 639 descriptor, two for dual mono
    std::optional<std::uint8_t> componentTag;
};

struct TeletextEntry
{
    std::uint16_t pid = 0;
    TeletextPage page;
    bool vbi = false; ///< from a VBI teletext descriptor
    std::optional<std::uint8_t> componentTag;
};

struct SubtitleEntry
{
    std::uint16_t pid = 0;
    SubtitlePage page;
    std::optional<std::uint8_t> componentTag;
};

struct AribTrack
{
    std::uint16_t pid = 0;
    bool superimpose = false; ///< superimposed text, otherwise captions
    std::optional<std::uint8_t> componentTag;
    std::optional<std::uint16_t> dataComponent; ///< 0x0008 fixed, 0x0012 mobile reception
};

/// One programme: its PMT in the order sent, and the tracks in the PMT, sorted by kind.
struct Programme
{
    std::uint16_t number = 0;
    std::uint16_t pmtPid = 0;
    std::uint16_t pcrPid = 0x1FFF; ///< 0x1FFF: no PCR
    std::uint8_t version = 0;
    std::string name;     ///< from the SDT; may be empty
    std::string provider; ///< from the SDT; may be empty
    std::vector<Descriptor> descriptors;
    std::vector<ElementaryStream> streams;

    std::vector<VideoTrack> video;
    std::vector<AudioTrack> audio;
    std::vector<TeletextEntry> teletext;
    std::vector<SubtitleEntry> subtitles;
    std::vector<AribTrack> arib;
};

/// Adds a PMT entry at the end of the programme and to the lists that it belongs to.
void AddStream(Programme& programme, ElementaryStream stream);

/// Whether the PMTs, including their versions, and the names are equal.
bool HaveSameContent(Programme const& left, Programme const& right);

} // namespace zviptv::sim
