// SPDX-License-Identifier: MIT
#include "CaptionCommands.h"

#include "Collect.h"
#include "output/Table.h"
#include "output/TrackText.h"

namespace zviptv::ctl {

namespace {

/// Adds the texts of one type to the table and the JSON list; returns false if the service refuses to list
/// them.
bool AddTexts(Session& session, EZVISDBTextType type, Table& table, Json::Value& list)
{
    auto& broadcast = session.Get<IBroadcastData>();
    unsigned int size = 0;
    if (!session.Ask("SizeOfISDBText", [&] { return broadcast.SizeOfISDBText(type, size); })) {
        return false;
    }
    auto const texts =
        Collect<ZVISDBText>(session, "GetISDBText", size, [&](unsigned int index, ZVISDBText& text) {
            return broadcast.GetISDBText(type, index, text);
        });
    EZVLanguageCode language = ZV_LANGUAGE_UNKNOWN;
    unsigned int current = 0;
    bool const known = session.Ask("GetCurrentISDBText",
                                   [&] { return broadcast.GetCurrentISDBText(type, language, current); });
    for (std::size_t index = 0; index < texts.size(); ++index) {
        ZVISDBText const& text = texts[index];
        table.Add({LowerName(type), std::to_string(index), LanguageWord(text.language),
                   ToHex(text.componentTag, 2), ToHex(text.pid, 4)},
                  known && index == current);
    }
    list = ToJson(texts);
    return true;
}

Answer ListCaptions(Session& session, CommandArguments const& /*arguments*/)
{
    Answer answer;
    Table table({"type", "#", "language", "tag", "pid"});
    answer.result = AddTexts(session, ZV_ISDB_TEXT_CAPTION, table, answer.json["captions"]) &&
                    AddTexts(session, ZV_ISDB_TEXT_SUPERIMPOSE, table, answer.json["superimpose"]);
    if (!answer.result) {
        return Refused("list the captions");
    }
    auto& player = session.Get<IPlayerControl>();
    EZVCaptionDataMode mode = ZV_CAPTION_DATA_MODE_UNKNOWN;
    bool const known = session.Ask("GetCaptionDataMode", [&] { return player.GetCaptionDataMode(mode); });
    answer.json["mode"] = known ? ToJson(mode) : Json::Value();
    answer.text = "caption mode: " + (known ? LowerName(mode) : "-") + "\n" + table.Text("no captions");
    return answer;
}

Answer SelectCaption(Session& session, CommandArguments const& arguments)
{
    auto const type = arguments.Get<EZVISDBTextType>(0);
    int const index = arguments.Get<int>(1);
    auto& player = session.Get<IPlayerControl>();
    std::string const text = LowerName(type) + " " + std::to_string(index);
    return Done(session.Ask("SetCurrentISDBText", [&] { return player.SetCurrentISDBText(type, index); }),
                text + " selected", "select " + text, "'zviptvctl captions list' lists them");
}

} // namespace

std::vector<Command> CaptionCommands()
{
    return {
        {"captions",
         "list",
         {},
         "Show the caption mode and list captions and superimposed text",
         ListCaptions},
        {"captions",
         "select",
         {{"TYPE", "caption or superimpose"},
          {"N", "Number of the text in the list of its type in 'captions list', from 0"}},
         "Select text N of the list of TYPE: caption or superimpose",
         SelectCaption},
    };
}

} // namespace zviptv::ctl
