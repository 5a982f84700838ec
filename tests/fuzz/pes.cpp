// SPDX-License-Identifier: MIT
#include "Fuzz.h"
#include "StreamTestSupport.h"

#include "mpegts/AribCaptions.h"
#include "mpegts/PesHeader.h"
#include "playback/Captions.h"
#include "stream/AudioFormat.h"
#include "stream/PesAssembler.h"
#include "stream/VideoFormat.h"

// PES packets: put together from damaged transport packets, their heads, the captions and pictures in them.

using namespace zviptv;
using namespace zviptv::sim;
using zviptv::fuzz::Require;
using zviptv::test::Bytes;

namespace {

constexpr std::size_t Limit = 2000;

/// Checks that the values in the header of a frame are possible or 0.
void CheckSounds(Bytes const& pes)
{
    for (auto const codec : {AudioCodec::Mpeg, AudioCodec::AacAdts, AudioCodec::AacLatm, AudioCodec::Aac,
                             AudioCodec::Ac3, AudioCodec::EnhancedAc3, AudioCodec::Dts}) {
        auto const format = ParseAudioFormat(codec, pes);
        Require(!format || codec != AudioCodec::Dts, "no head of a DTS frame is known");
        Require(!format || (format->sampleRate > 0 && format->sampleRate <= 192000), "a sound's rate");
        Require(!format || (format->channels <= 8 && format->bitRate <= 10000000), "and channels and bits");
    }
}

/// Every language takes five bytes at least.
void CheckLanguages(Bytes const& pes)
{
    auto const languages = ParseAribLanguages(pes);
    if (!languages) {
        return;
    }
    constexpr std::size_t LanguageSize = 5;
    Require(languages->size() * LanguageSize < pes.size(), "no language comes from nowhere");
    for (AribLanguage const& language : *languages) {
        Require(language.tag < 8 && language.language.size() == 3,
                "a language has a tag and three characters");
    }
}

void CheckContent(Bytes const& pes)
{
    auto const header = ParsePesHeader(pes);
    Require(!header || header->payload.Size() + 6 <= pes.size(), "a payload's place");
    for (auto const kind : {StreamKind::Teletext, StreamKind::AribCaption, StreamKind::Video}) {
        auto const caption = CaptionIn({0x100, kind, {}, {}, pes});
        Require(!caption ||
                    (header && !caption->data.empty() && caption->data.size() <= header->payload.Size()),
                "captions are in the payload");
    }
    for (auto const codec : {VideoCodec::Mpeg1, VideoCodec::Mpeg2, VideoCodec::H264, VideoCodec::Hevc}) {
        auto const format = ParseVideoFormat(codec, pes);
        Require(!format || (format->width > 0 && format->width <= 16384 && format->height > 0),
                "a picture has a size");
        Require(!format || (format->frameRate.numerator == 0) == (format->frameRate.denominator == 0),
                "a rate is a number or not known");
    }
    CheckSounds(pes);
    CheckLanguages(pes);
}

/// Packets of any kind produce no more data than the limit allows.
void CheckAssembly(Bytes const& stream)
{
    PesAssembler assembler(Limit);
    std::size_t count = 0;
    zviptv::test::ForEachPacket(stream, [&](TsPacket const& packet) {
        auto const done = assembler.Push(packet);
        Require(done.size() <= 2, "a packet completes two at most");
        count += done.size();
        for (Bytes const& pes : done) {
            Require(pes.size() >= 6 && pes.size() <= Limit, "within the limit");
        }
    });
    count += assembler.Flush() ? 1U : 0U;
    Require(assembler.Counters().delivered == count, "what was handed out is counted");
}

/// Data sent in order arrives byte for byte.
void CheckRoundTrip(Bytes const& payload, bool open, std::uint64_t pts)
{
    Bytes const pes = zviptv::test::MakePes(pts, payload, open);
    zviptv::test::StreamBuilder builder;
    builder.Pes(0x100, pes);
    PesAssembler assembler;
    std::vector<Bytes> arrived;
    zviptv::test::ForEachPacket(builder.Stream(), [&](TsPacket const& packet) {
        for (Bytes& done : assembler.Push(packet)) {
            arrived.push_back(std::move(done));
        }
    });
    if (auto last = assembler.Flush()) {
        arrived.push_back(std::move(*last));
    }
    Require(arrived.size() == 1 && arrived[0] == pes, "a PES packet arrives as it was sent");
    Require(ParsePesHeader(pes)->pts == pts, "and so does its time stamp");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    int const kind = input.ConsumeIntegralInRange(0, 3);
    std::uint64_t const pts = kind < 2 ? 0 : input.ConsumeIntegral<std::uint64_t>() & 0x1FFFFFFFF;
    Bytes bytes = zviptv::fuzz::Rest(input);
    if (kind == 0) {
        CheckContent(bytes);
    } else if (kind == 1) {
        CheckAssembly(bytes);
    } else {
        bytes.resize(std::min<std::size_t>(bytes.size(), 60000));
        CheckRoundTrip(bytes, kind == 2, pts);
    }
    return 0;
}
