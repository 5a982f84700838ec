// SPDX-License-Identifier: MIT
#include "Tracks.h"

namespace zviptv::sim {

namespace {

// Types of teletext pages in their descriptor.
constexpr std::uint8_t TeletextSubtitle = 0x02;
constexpr std::uint8_t TeletextHardOfHearing = 0x05;

// DVB subtitles for the hard of hearing have types 0x20 to 0x2F.
constexpr std::uint8_t SubtitleTypeGroup = 0xF0;
constexpr std::uint8_t HardOfHearingGroup = 0x20;

EZVAudioEncodeType EncodingOf(AudioCodec codec)
{
    switch (codec) {
    case AudioCodec::Mpeg:
        return ZV_AUDIO_ENCODE_MPEG;
    case AudioCodec::AacAdts:
    case AudioCodec::Aac:
        return ZV_AUDIO_ENCODE_AAC;
    case AudioCodec::AacLatm:
        return ZV_AUDIO_ENCODE_LATM;
    case AudioCodec::Ac3:
        return ZV_AUDIO_ENCODE_AC3;
    case AudioCodec::EnhancedAc3:
        return ZV_AUDIO_ENCODE_EAC3;
    case AudioCodec::Dts:
        return ZV_AUDIO_ENCODE_DTS;
    }
    return ZV_AUDIO_ENCODE_UNKNOWN;
}

std::uint8_t StreamTypeOf(Programme const& programme, std::uint16_t pid)
{
    for (ElementaryStream const& stream : programme.streams) {
        if (stream.pid == pid) {
            return stream.streamType;
        }
    }
    return 0;
}

void AddFormat(ZVAudio& record, AudioFormat const& format)
{
    record.sampleRate = format.sampleRate;
    record.bitRate = format.bitRate;
    record.channels = format.channels;
    if (format.dualMono) {
        record.dualMono = *format.dualMono ? 1 : 0;
    }
}

} // namespace

std::vector<ZVAudio> AudioTracks(Programme const& programme, AudioFormats const& formats)
{
    std::vector<ZVAudio> records;
    for (AudioTrack const& track : programme.audio) {
        ZVAudio record{};
        record.language = ZVLanguageFromISO639(track.language.c_str());
        record.encoding = EncodingOf(track.codec);
        record.pid = track.pid;
        record.componentTag = track.componentTag.value_or(0);
        record.audioType = track.audioType;
        record.dualMono = track.languages.size() == 2 ? 1 : 0;
        record.streamType = StreamTypeOf(programme, track.pid);
        auto const format = formats.find(track.pid);
        if (format != formats.end()) {
            AddFormat(record, format->second);
        }
        records.push_back(record);
    }
    return records;
}

std::vector<ZVTTX> TeletextPages(Programme const& programme)
{
    std::vector<ZVTTX> records;
    for (TeletextEntry const& entry : programme.teletext) {
        ZVTTX record{};
        record.language = ZVLanguageFromISO639(entry.page.language.c_str());
        record.pid = entry.pid;
        record.magazine = entry.page.magazine;
        record.page = entry.page.page;
        record.type = entry.page.type;
        record.componentTag = entry.componentTag.value_or(0);
        records.push_back(record);
    }
    return records;
}

std::vector<ZVHybridSBT> Subtitles(Programme const& programme)
{
    std::vector<ZVHybridSBT> records;
    for (SubtitleEntry const& entry : programme.subtitles) {
        ZVHybridSBT record{};
        record.language = ZVLanguageFromISO639(entry.page.language.c_str());
        record.kind = ZV_SUBTITLE_DVB;
        record.pid = entry.pid;
        record.compositionPage = entry.page.compositionPage;
        record.ancillaryPage = entry.page.ancillaryPage;
        record.type = entry.page.type;
        record.hardOfHearing = (entry.page.type & SubtitleTypeGroup) == HardOfHearingGroup ? 1 : 0;
        record.componentTag = entry.componentTag.value_or(0);
        records.push_back(record);
    }
    return records;
}

std::vector<ZVHybridSBT> HybridSubtitles(Programme const& programme)
{
    std::vector<ZVHybridSBT> records = Subtitles(programme);
    for (ZVTTX const& page : TeletextPages(programme)) {
        if (!IsSubtitle(page)) {
            continue;
        }
        ZVHybridSBT record{};
        record.language = page.language;
        record.kind = ZV_SUBTITLE_TELETEXT;
        record.pid = page.pid;
        record.type = page.type;
        record.hardOfHearing = IsForHardOfHearing(page) ? 1 : 0;
        record.magazine = page.magazine;
        record.page = page.page;
        record.componentTag = page.componentTag;
        records.push_back(record);
    }
    return records;
}

std::vector<ZVISDBText> IsdbTexts(Programme const& programme, EZVISDBTextType type,
                                  AribLanguages const& languages)
{
    std::vector<ZVISDBText> records;
    for (AribTrack const& track : programme.arib) {
        if (track.superimpose != (type == ZV_ISDB_TEXT_SUPERIMPOSE)) {
            continue;
        }
        ZVISDBText record{};
        record.type = type;
        record.pid = track.pid;
        record.dataComponent = track.dataComponent.value_or(0);
        record.componentTag = track.componentTag.value_or(0);
        auto const known = languages.find(track.pid);
        if (known == languages.end() || known->second.empty()) {
            records.push_back(record);
            continue;
        }
        for (AribLanguage const& language : known->second) {
            record.language = ZVLanguageFromISO639(language.language.c_str());
            record.languageTag = language.tag;
            records.push_back(record);
        }
    }
    return records;
}

bool IsSubtitle(ZVTTX const& page)
{
    return page.type == TeletextSubtitle || page.type == TeletextHardOfHearing;
}

bool IsForHardOfHearing(ZVTTX const& page)
{
    return page.type == TeletextHardOfHearing;
}

} // namespace zviptv::sim
