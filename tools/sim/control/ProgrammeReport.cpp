// SPDX-License-Identifier: MIT
#include "ProgrammeReport.h"

#include "playback/Tracks.h"

#include <cstddef>

namespace zviptv::sim {

namespace {

constexpr char const* AudioCodings[] = {"unknown", "mpeg", "ac3", "eac3", "aac", "latm", "dts", "ac4", "pcm"};

std::string CodingOf(ZVAudio const& track)
{
    auto const number = static_cast<std::size_t>(track.encoding);
    return number < std::size(AudioCodings) ? AudioCodings[number] : AudioCodings[0];
}

GVariant* Flag(bool value)
{
    return g_variant_new_boolean(value ? TRUE : FALSE);
}

GVariant* Unsigned(std::uint64_t value)
{
    return g_variant_new_uint32(static_cast<guint32>(value));
}

/// The page number for people: magazine 8, page 0x88 is 888.
GVariant* PageNumber(unsigned magazine, unsigned page)
{
    constexpr unsigned halfByte = 4;
    constexpr unsigned low = 0xF;
    return Unsigned(magazine * 100 + (page >> halfByte) * 10 + (page & low));
}

/// A dictionary for each record, which `add` fills.
template <typename Record, typename Add>
GVariant* ListOf(std::vector<Record> const& records, Add add)
{
    GVariantBuilder list;
    g_variant_builder_init(&list, G_VARIANT_TYPE("aa{sv}"));
    for (Record const& record : records) {
        Dictionary entry;
        entry.Add("language", ZVLanguageToISO639(record.language)).Add("pid", Unsigned(record.pid));
        add(entry, record);
        g_variant_builder_add_value(&list, entry.End());
    }
    return g_variant_builder_end(&list);
}

void AddAudio(Dictionary& entry, ZVAudio const& track)
{
    entry.Add("coding", CodingOf(track))
        .Add("channels", Unsigned(track.channels))
        .Add("sampleRate", Unsigned(track.sampleRate));
}

void AddTeletext(Dictionary& entry, ZVTTX const& page)
{
    entry.Add("page", PageNumber(page.magazine, page.page)).Add("subtitles", Flag(IsSubtitle(page)));
}

GVariant* TextList(Player const& player, EZVISDBTextType type)
{
    return ListOf(IsdbTexts(player.Current(), type, player.TextLanguages()),
                  [](Dictionary& entry, ZVISDBText const& text) {
                      entry.Add("componentTag", Unsigned(text.componentTag));
                  });
}

/// Empty if there is no such programme.
GVariant* ProgrammeOf(GuideEntry const* programme)
{
    Dictionary entry;
    if (programme != nullptr) {
        entry.Add("title", programme->main.title)
            .Add("subtitle", programme->main.subtitle)
            .Add("description", programme->main.description)
            .Add("start", g_variant_new_int64(programme->start))
            .Add("duration", Unsigned(programme->duration))
            .Add("minimumAge", Unsigned(programme->rating ? programme->rating->minimumAge.value_or(0) : 0));
    }
    return entry.End();
}

} // namespace

void AddSubtitle(Dictionary& entry, ZVHybridSBT const& subtitle)
{
    bool const isTeletext = subtitle.kind == ZV_SUBTITLE_TELETEXT;
    entry.Add("kind", std::string(isTeletext ? "teletext" : "dvb"))
        .Add("page",
             isTeletext ? PageNumber(subtitle.magazine, subtitle.page) : Unsigned(subtitle.compositionPage))
        .Add("hardOfHearing", Flag(subtitle.hardOfHearing != 0));
}

void AddProgramme(Dictionary& report, Television const& television)
{
    Player const& player = television.player;
    Programme const& programme = player.Current();
    ProgrammeGuideService::NowAndNext const guide = television.guide.Programmes();
    report.Add("Present", ProgrammeOf(guide.present))
        .Add("Following", ProgrammeOf(guide.following))
        .Add("AudioTracks", ListOf(AudioTracks(programme, player.Sounds()), AddAudio))
        .Add("Subtitles", ListOf(HybridSubtitles(programme), AddSubtitle))
        .Add("TeletextPages", ListOf(TeletextPages(programme), AddTeletext))
        .Add("Captions", TextList(player, ZV_ISDB_TEXT_CAPTION))
        .Add("SuperimposedTexts", TextList(player, ZV_ISDB_TEXT_SUPERIMPOSE));
}

} // namespace zviptv::sim
