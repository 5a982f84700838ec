// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "playback/CaptionServices.h"
#include "playback/Captions.h"
#include "playback/Tracks.h"
#include "stream/Demux.h"
#include "stream/TsReader.h"
#include "stream/VideoFormat.h"

// A file of any bytes as transport stream: reader, demultiplexer, tables, PES packets, captions.

using namespace zviptv;
using namespace zviptv::sim;
using zviptv::fuzz::IsUtf8;
using zviptv::fuzz::Require;

namespace {

constexpr std::uint64_t PtsModulus = std::uint64_t{1} << 33;

/// The known frames of the programme, as the player keeps them.
struct Reported
{
    AudioFormats sounds;
    AribLanguages texts;
};

void CheckTexts(Programme const& programme, AribLanguages const& languages)
{
    std::size_t wanted = 0;
    for (AribTrack const& track : programme.arib) {
        auto const known = languages.find(track.pid);
        wanted += known == languages.end() ? 1 : std::max<std::size_t>(known->second.size(), 1);
    }
    Require(IsdbTexts(programme, ZV_ISDB_TEXT_CAPTION, languages).size() +
                    IsdbTexts(programme, ZV_ISDB_TEXT_SUPERIMPOSE, languages).size() ==
                wanted,
            "every ISDB text in each language");
}

void Check(Programme const& programme, Reported const& reported)
{
    Require(IsUtf8(programme.name) && IsUtf8(programme.provider), "names are UTF-8");
    Require(AudioTracks(programme, reported.sounds).size() == programme.audio.size(),
            "every audio track becomes a record");
    Require(TeletextPages(programme).size() == programme.teletext.size(), "every teletext page");
    Require(Subtitles(programme).size() == programme.subtitles.size(), "every subtitle");
    CheckTexts(programme, reported.texts);
    for (CaptionService const& service : CaptionServices(programme)) {
        Require(service.number >= 0 && service.number < 64, "a caption service has six bits");
    }
}

/// Reads the packet's header with the type in its programme.
void Listen(Programme const& programme, PesPacket const& pes, Reported& reported)
{
    for (AudioTrack const& track : programme.audio) {
        if (track.pid == pes.pid) {
            if (auto const format = ParseAudioFormat(track.codec, pes.bytes)) {
                Require(format->sampleRate > 0, "a sound has a rate");
                reported.sounds[track.pid] = *format;
            }
        }
    }
    if (pes.kind == StreamKind::AribCaption || pes.kind == StreamKind::AribSuperimpose) {
        if (auto languages = ParseAribLanguages(pes.bytes)) {
            reported.texts[pes.pid] = std::move(*languages);
        }
    }
}

void Check(PesPacket const& pes)
{
    Require(pes.pid < 0x1FFF, "a PID of 13 bits, not the null packets'");
    Require(pes.pts.value_or(0) < PtsModulus && pes.dts.value_or(0) < PtsModulus, "stamps of 33 bits");
    Require(pes.bytes.size() >= 6 && pes.bytes[0] == 0 && pes.bytes[1] == 0 && pes.bytes[2] == 1,
            "a PES packet begins with its start code");
    if (auto const caption = CaptionIn(pes)) {
        Require(!caption->data.empty() && caption->data.size() <= pes.bytes.size(),
                "captions are in the packet");
    }
    for (auto const codec : {VideoCodec::Mpeg2, VideoCodec::H264, VideoCodec::Hevc}) {
        auto const format = ParseVideoFormat(codec, pes.bytes);
        Require(!format || (format->width > 0 && format->height > 0), "a picture has a size");
    }
}

/// More must not come out than went in, and time must not run back.
void Play(Demux& demux, std::size_t size, StreamTime& last)
{
    std::size_t delivered = 0;
    Reported reported;
    while (auto const event = demux.Next()) {
        Require(event->at.time >= last && event->at.stc < PcrModulus, "time does not run back");
        last = event->at.time;
        if (event->type == EventType::Pes) {
            Check(event->pes);
            Require(demux.Current() != nullptr, "a packet belongs to a programme");
            Listen(*demux.Current(), event->pes, reported);
            delivered += event->pes.bytes.size();
        } else if (event->programme) {
            Check(*event->programme, reported);
        }
    }
    if (demux.Current()) {
        Check(*demux.Current(), reported);
    }
    Require(delivered <= size, "no more comes out than went in");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::vector<std::uint8_t> bytes(data, data + size);
    bytes.resize(std::max<std::size_t>(size, 1)); // a file in memory has a byte at least
    try {
        TsReader::File file(fmemopen(bytes.data(), bytes.size(), "rb"));
        Demux demux(std::make_unique<TsReader>(std::move(file), "memory"));
        StreamTime last{};
        Play(demux, bytes.size(), last);
        demux.Rewind();
        Require(demux.Programmes().size() <= ProgrammeTable::MaxProgrammes,
                "at most the allowed number of programmes");
        for (Programme const& programme : std::vector<Programme>(demux.Programmes())) {
            Check(programme, {});
        }
        if (!demux.Programmes().empty()) {
            std::uint16_t const number = demux.Programmes().back().number;
            Require(demux.Select(number) && demux.Current()->number == number, "a known programme is played");
        }
        Play(demux, bytes.size(), last);
    } catch (StreamError const& error) {
        Require(!zviptv::fuzz::HasControls(error.what()), "an error is one line");
    }
    return 0;
}
