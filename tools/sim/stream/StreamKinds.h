#pragma once

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
    Aac, ///< announced by an AAC descriptor, framing not told
    Ac3,
    EnhancedAc3,
    Dts
};

/// Words for people and logs: "audio", "H.264", "E-AC-3".
char const* NameOf(StreamKind kind);
char const* NameOf(VideoCodec codec);
char const* NameOf(AudioCodec codec);

} // namespace zviptv::sim
