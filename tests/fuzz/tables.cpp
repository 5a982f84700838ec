// SPDX-License-Identifier: MIT
#include "Sections.h"

#include "playback/CaptionServices.h"
#include "playback/Tracks.h"
#include "stream/ProgrammeTable.h"

// PAT, PMT and SDT with any contents and correct check sums.

using namespace zviptv;
using namespace zviptv::sim;
using zviptv::fuzz::IsUtf8;
using zviptv::fuzz::Require;

namespace {

std::vector<std::uint16_t> const Pids{0x0000, 0x1000, 0x0011, 0x0100};

/// Three characters, or none at all.
bool IsLanguage(std::string const& language)
{
    return language.empty() ||
           (language.size() == 3 && IsUtf8(language) && !zviptv::fuzz::HasControls(language));
}

void Check(Programme const& programme)
{
    Require(IsUtf8(programme.name) && IsUtf8(programme.provider), "names are UTF-8");
    Require(!zviptv::fuzz::HasControls(programme.name), "names have no control characters");
    for (AudioTrack const& track : programme.audio) {
        Require(IsLanguage(track.language), "an audio track's language");
    }
    for (TeletextEntry const& entry : programme.teletext) {
        Require(IsLanguage(entry.page.language), "a teletext page's language");
        Require(entry.page.magazine >= 1 && entry.page.magazine <= 8, "a teletext magazine");
    }
    for (SubtitleEntry const& entry : programme.subtitles) {
        Require(IsLanguage(entry.page.language), "a subtitle's language");
    }
    Require(AudioTracks(programme).size() == programme.audio.size(), "every audio track becomes a record");
    Require(Subtitles(programme).size() == programme.subtitles.size(), "every subtitle");
    std::size_t const pages = TeletextPages(programme).size();
    Require(pages == programme.teletext.size(), "every teletext page");
    Require(HybridSubtitles(programme).size() <= programme.subtitles.size() + pages,
            "and those with subtitles");
    Require(IsdbTexts(programme, ZV_ISDB_TEXT_CAPTION).size() +
                    IsdbTexts(programme, ZV_ISDB_TEXT_SUPERIMPOSE).size() ==
                programme.arib.size(),
            "every ISDB text");
    CaptionServices(programme);
    Require(HaveSameContent(programme, programme), "a programme is like itself");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    auto const sections = zviptv::fuzz::ConsumeSections(input, Pids, ServiceSections.largest);
    auto const stream = zviptv::fuzz::StreamOf(sections);
    for (std::uint16_t const pid : Pids) {
        zviptv::fuzz::CheckArrival(sections, stream, pid, ServiceSections);
    }
    ProgrammeTable table;
    zviptv::test::ForEachPacket(stream, [&](TsPacket const& packet) { table.Push(packet); });
    Require(table.Programmes().size() <= ProgrammeTable::MaxProgrammes,
            "at most the allowed number of programmes");
    for (Programme const& programme : table.Programmes()) {
        Check(programme);
        Require(table.Find(programme.number) == &programme, "a programme is found by its number");
    }
    return 0;
}
