// SPDX-License-Identifier: MIT
#include "stream/Programme.h"

#include <map>

namespace zviptv::sim {

namespace {

constexpr std::uint8_t PrivatePes = 0x06;

struct Formats
{
    std::optional<VideoCodec> video;
    std::optional<AudioCodec> audio;
};

ByteView Find(ElementaryStream const& stream, std::uint8_t tagWanted)
{
    for (Descriptor const& descriptor : stream.descriptors) {
        if (descriptor.tag == tagWanted) {
            return descriptor.data;
        }
    }
    return {};
}

bool Has(ElementaryStream const& stream, std::uint8_t tagWanted)
{
    return std::any_of(stream.descriptors.begin(), stream.descriptors.end(),
                       [=](Descriptor const& descriptor) { return descriptor.tag == tagWanted; });
}

Formats FormatOfType(std::uint8_t streamType)
{
    static std::map<std::uint8_t, Formats> const types{
        {0x01, {VideoCodec::Mpeg1, {}}},       {0x02, {VideoCodec::Mpeg2, {}}},
        {0x10, {VideoCodec::Mpeg4, {}}},       {0x1B, {VideoCodec::H264, {}}},
        {0x24, {VideoCodec::Hevc, {}}},        {0x03, {{}, AudioCodec::Mpeg}},
        {0x04, {{}, AudioCodec::Mpeg}},        {0x0F, {{}, AudioCodec::AacAdts}},
        {0x11, {{}, AudioCodec::AacLatm}},     {0x81, {{}, AudioCodec::Ac3}},
        {0x87, {{}, AudioCodec::EnhancedAc3}}, {0x8A, {{}, AudioCodec::Dts}}};
    auto const found = types.find(streamType);
    return found != types.end() ? found->second : Formats();
}

Formats FormatOfRegistration(ByteView data)
{
    std::string const identifier(data.begin(), data.end());
    if (identifier.compare(0, 4, "AC-3") == 0) {
        return {{}, AudioCodec::Ac3};
    }
    if (identifier.compare(0, 4, "EAC3") == 0) {
        return {{}, AudioCodec::EnhancedAc3};
    }
    if (identifier.compare(0, 3, "DTS") == 0) {
        return {{}, AudioCodec::Dts};
    }
    if (identifier.compare(0, 4, "HEVC") == 0) {
        return {VideoCodec::Hevc, {}};
    }
    return {};
}

/// The kind of a private PES stream, which a descriptor shows.
Formats FormatOfPrivate(ElementaryStream const& stream)
{
    if (Has(stream, tag::Ac3)) {
        return {{}, AudioCodec::Ac3};
    }
    if (Has(stream, tag::EnhancedAc3)) {
        return {{}, AudioCodec::EnhancedAc3};
    }
    if (Has(stream, tag::Dts)) {
        return {{}, AudioCodec::Dts};
    }
    if (Has(stream, tag::Aac)) {
        return {{}, AudioCodec::Aac};
    }
    return FormatOfRegistration(Find(stream, tag::Registration));
}

Formats FormatOf(ElementaryStream const& stream)
{
    return stream.streamType == PrivatePes ? FormatOfPrivate(stream) : FormatOfType(stream.streamType);
}

bool CarriesSections(std::uint8_t streamType)
{
    return streamType == 0x05 || (streamType >= 0x0A && streamType <= 0x0D) || streamType == 0x14 ||
           streamType == 0x86;
}

std::optional<std::uint16_t> DataComponentOf(ElementaryStream const& stream)
{
    ByteView const data = Find(stream, tag::DataComponent);
    return data.Size() < 2 ? std::nullopt : std::optional<std::uint16_t>(data.U16(0));
}

/// Whether it is ARIB text: by its data component or, if nothing else is announced, only by its component
/// tag.
std::optional<StreamKind> AribKindOf(ElementaryStream const& stream)
{
    std::uint8_t const component = stream.componentTag.value_or(0);
    bool const captionTag = component >= 0x30 && component <= 0x37;
    bool const superimposeTag = component >= 0x38 && component <= 0x3F;
    constexpr std::uint8_t MobileSuperimposeTag = 0x88;
    if (Has(stream, tag::DataComponent)) {
        auto const id = DataComponentOf(stream);
        if (id != 0x0008 && id != 0x0012) {
            return std::nullopt;
        }
        return superimposeTag || component == MobileSuperimposeTag ? StreamKind::AribSuperimpose
                                                                   : StreamKind::AribCaption;
    }
    if (Has(stream, tag::Registration) || (!captionTag && !superimposeTag)) {
        return std::nullopt;
    }
    return captionTag ? StreamKind::AribCaption : StreamKind::AribSuperimpose;
}

StreamKind KindOf(ElementaryStream const& stream, Formats const& formats)
{
    if (formats.video || formats.audio) {
        return formats.video ? StreamKind::Video : StreamKind::Audio;
    }
    if (CarriesSections(stream.streamType)) {
        return StreamKind::Sections;
    }
    if (stream.streamType != PrivatePes) {
        return StreamKind::Other;
    }
    if (Has(stream, tag::Teletext) || Has(stream, tag::VbiTeletext)) {
        return StreamKind::Teletext;
    }
    if (Has(stream, tag::Subtitling)) {
        return StreamKind::Subtitle;
    }
    return AribKindOf(stream).value_or(StreamKind::Other);
}

AudioTrack DescribeAudio(ElementaryStream const& stream, AudioCodec codec)
{
    AudioTrack track;
    track.pid = stream.pid;
    track.codec = codec;
    track.componentTag = stream.componentTag;
    for (Descriptor const& descriptor : stream.descriptors) {
        if (descriptor.tag != tag::Iso639Language) {
            continue;
        }
        auto const entries = ParseLanguages(descriptor.data);
        track.languages.insert(track.languages.end(), entries.begin(), entries.end());
    }
    if (!track.languages.empty()) {
        track.language = track.languages.front().language;
        track.audioType = track.languages.front().audioType;
    }
    for (Descriptor const& descriptor : stream.descriptors) {
        if (descriptor.tag == tag::Extension) {
            track.language = ParseSupplementaryAudioLanguage(descriptor.data).value_or(track.language);
        }
    }
    return track;
}

bool SameDescriptors(std::vector<Descriptor> const& left, std::vector<Descriptor> const& right)
{
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [](Descriptor const& l, Descriptor const& r) { return l.tag == r.tag && l.data == r.data; });
}

bool SameStream(ElementaryStream const& left, ElementaryStream const& right)
{
    return left.pid == right.pid && left.streamType == right.streamType &&
           SameDescriptors(left.descriptors, right.descriptors);
}

void AddPages(Programme& programme, ElementaryStream const& stream)
{
    for (Descriptor const& descriptor : stream.descriptors) {
        if (descriptor.tag == tag::Teletext || descriptor.tag == tag::VbiTeletext) {
            for (TeletextPage const& page : ParseTeletextPages(descriptor.data)) {
                programme.teletext.push_back(
                    {stream.pid, page, descriptor.tag == tag::VbiTeletext, stream.componentTag});
            }
        }
        if (descriptor.tag == tag::Subtitling) {
            for (SubtitlePage const& page : ParseSubtitlePages(descriptor.data)) {
                programme.subtitles.push_back({stream.pid, page, stream.componentTag});
            }
        }
    }
}

} // namespace

void AddStream(Programme& programme, ElementaryStream stream)
{
    ByteView const identifier = Find(stream, tag::StreamIdentifier);
    if (!identifier.Empty()) {
        stream.componentTag = identifier[0];
    }

    Formats const formats = FormatOf(stream);
    stream.kind = KindOf(stream, formats);
    if (formats.video) {
        programme.video.push_back({stream.pid, *formats.video, stream.componentTag});
    }
    if (formats.audio) {
        programme.audio.push_back(DescribeAudio(stream, *formats.audio));
    }
    if (stream.streamType == PrivatePes) {
        AddPages(programme, stream);
    }
    if (stream.kind == StreamKind::AribCaption || stream.kind == StreamKind::AribSuperimpose) {
        programme.arib.push_back({stream.pid, stream.kind == StreamKind::AribSuperimpose, stream.componentTag,
                                  DataComponentOf(stream)});
    }
    programme.streams.push_back(std::move(stream));
}

bool HaveSameContent(Programme const& left, Programme const& right)
{
    return left.number == right.number && left.pmtPid == right.pmtPid && left.pcrPid == right.pcrPid &&
           left.version == right.version && left.name == right.name && left.provider == right.provider &&
           SameDescriptors(left.descriptors, right.descriptors) &&
           std::equal(left.streams.begin(), left.streams.end(), right.streams.begin(), right.streams.end(),
                      SameStream);
}

} // namespace zviptv::sim
