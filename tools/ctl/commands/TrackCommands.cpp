// SPDX-License-Identifier: MIT
#include "TrackCommands.h"

#include "Collect.h"
#include "output/Table.h"
#include "output/TrackText.h"

namespace zviptv::ctl {

namespace {

/// Number, or a dash for 0, which means "not known".
std::string OrDash(std::uint32_t number, std::string const& unit = "")
{
    return number == 0 ? "-" : std::to_string(number) + unit;
}

std::string TeletextPage(unsigned magazine, unsigned page)
{
    return std::to_string(magazine) + ToHex(page, 2).substr(2);
}

Answer Listed(Table const& table, std::string const& nothing, std::string const& member,
              Json::Value const& list)
{
    Answer answer;
    answer.text = table.Text(nothing);
    answer.json[member] = list;
    answer.json["current"] = Json::Value();
    return answer;
}

Answer ListAudio(Session& session, CommandArguments const& /*arguments*/)
{
    auto& broadcast = session.Get<IBroadcastData>();
    unsigned int size = 0;
    if (!session.Ask("SizeOfAudio", [&] { return broadcast.SizeOfAudio(size); })) {
        return Refused("list the audio tracks");
    }
    auto const tracks = Collect<ZVAudio>(session, "GetAudio", size, [&](unsigned int index, ZVAudio& audio) {
        return broadcast.GetAudio(index, audio);
    });
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    int current = -1;
    bool const known =
        session.Ask("GetCurrentAudioInfo", [&] { return broadcast.GetCurrentAudioInfo(language, current); });
    Table table({"#", "language", "coding", "channels", "sample rate", "bit rate", "pid"});
    for (std::size_t index = 0; index < tracks.size(); ++index) {
        ZVAudio const& audio = tracks[index];
        table.Add({std::to_string(index), LanguageWord(audio.language), LowerName(audio.encoding),
                   OrDash(audio.channels), OrDash(audio.sampleRate, " Hz"), OrDash(audio.bitRate, " bit/s"),
                   ToHex(audio.pid, 4)},
                  known && static_cast<long long>(index) == current);
    }
    Answer answer = Listed(table, "no audio tracks", "audio", KnownJson(tracks));
    if (known) {
        answer.json["current"] = current;
    }
    return answer;
}

Answer SelectAudio(Session& session, CommandArguments const& arguments)
{
    int const index = arguments.Get<int>(0);
    auto& player = session.Get<IPlayerControl>();
    return Done(session.Ask("SetCurrentAudioByIndex", [&] { return player.SetCurrentAudioByIndex(index); }),
                "audio track " + std::to_string(index) + " selected",
                "select audio track " + std::to_string(index), "'zviptvctl audio list' lists them");
}

Answer ListTeletext(Session& session, CommandArguments const& /*arguments*/)
{
    auto& broadcast = session.Get<IBroadcastData>();
    unsigned int size = 0;
    if (!session.Ask("SizeOfTTX", [&] { return broadcast.SizeOfTTX(size); })) {
        return Refused("list the teletext pages");
    }
    auto const pages = Collect<ZVTTX>(session, "GetTTX", size, [&](unsigned int index, ZVTTX& page) {
        return broadcast.GetTTX(index, page);
    });
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    unsigned int current = 0;
    bool const known =
        session.Ask("GetCurrentTTX", [&] { return broadcast.GetCurrentTTX(language, current); });
    Table table({"#", "language", "page", "type", "pid"});
    for (std::size_t index = 0; index < pages.size(); ++index) {
        ZVTTX const& page = pages[index];
        table.Add({std::to_string(index), LanguageWord(page.language), TeletextPage(page.magazine, page.page),
                   std::to_string(page.type), ToHex(page.pid, 4)},
                  known && index == current);
    }
    Answer answer = Listed(table, "no teletext", "ttx", ToJson(pages));
    if (known) {
        answer.json["current"] = current;
    }
    return answer;
}

Answer SelectTeletext(Session& session, CommandArguments const& arguments)
{
    auto const index = arguments.Get<unsigned int>(0);
    auto& player = session.Get<IPlayerControl>();
    return Done(session.Ask("SetCurrentTTX", [&] { return player.SetCurrentTTX(index); }),
                "teletext entry " + std::to_string(index) + " selected",
                "select teletext entry " + std::to_string(index), "'zviptvctl ttx list' lists them");
}

Answer ListSubtitles(Session& session, CommandArguments const& /*arguments*/)
{
    auto& broadcast = session.Get<IBroadcastData>();
    unsigned int size = 0;
    if (!session.Ask("SizeOfHybridSBT", [&] { return broadcast.SizeOfHybridSBT(size); })) {
        return Refused("list the subtitles");
    }
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    auto const subtitles =
        Collect<ZVHybridSBT>(session, "GetHybridSBT", size, [&](unsigned int index, ZVHybridSBT& subtitle) {
            return broadcast.GetHybridSBT(index, language, subtitle);
        });
    unsigned int current = 0;
    bool const known =
        session.Ask("GetCurrentHybridSBT", [&] { return broadcast.GetCurrentHybridSBT(language, current); });
    Table table({"#", "language", "kind", "page", "hard of hearing", "pid"});
    for (std::size_t index = 0; index < subtitles.size(); ++index) {
        ZVHybridSBT const& subtitle = subtitles[index];
        std::string const page = subtitle.kind == ZV_SUBTITLE_TELETEXT
                                     ? TeletextPage(subtitle.magazine, subtitle.page)
                                     : std::to_string(subtitle.compositionPage);
        table.Add({std::to_string(index), LanguageWord(subtitle.language), LowerName(subtitle.kind), page,
                   subtitle.hardOfHearing != 0 ? "yes" : "no", ToHex(subtitle.pid, 4)},
                  known && index == current);
    }
    Answer answer = Listed(table, "no subtitles", "subtitles", ToJson(subtitles));
    if (known) {
        answer.json["current"] = current;
    }
    return answer;
}

Answer SelectSubtitle(Session& session, CommandArguments const& arguments)
{
    auto const index = arguments.Get<unsigned int>(0);
    auto& player = session.Get<IPlayerControl>();
    return Done(session.Ask("SetCurrentHybridSBT", [&] { return player.SetCurrentHybridSBT(index); }),
                "subtitle " + std::to_string(index) + " selected", "select subtitle " + std::to_string(index),
                "'zviptvctl subtitle list' lists them");
}

} // namespace

std::vector<Command> TrackCommands()
{
    return {
        {"audio", "list", {}, "List the audio tracks; a star marks the current one", ListAudio},
        {"audio",
         "select",
         {{"N", "Number of the track in 'audio list', from 0"}},
         "Select audio track N of the list",
         SelectAudio},
        {"subtitle", "list", {}, "List the subtitles; a star marks the current one", ListSubtitles},
        {"subtitle",
         "select",
         {{"N", "Number of the subtitle in 'subtitle list', from 0"}},
         "Select subtitle N of the list",
         SelectSubtitle},
        {"ttx", "list", {}, "List the teletext pages; a star marks the current one", ListTeletext},
        {"ttx",
         "select",
         {{"N", "Number of the entry in 'ttx list', from 0; not the page"}},
         "Select entry N of the list",
         SelectTeletext},
    };
}

} // namespace zviptv::ctl
