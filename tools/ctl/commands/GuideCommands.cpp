// SPDX-License-Identifier: MIT
#include "GuideCommands.h"

#include "common/PrintableText.h"
#include "session/Session.h"

#include <glib.h>
#include <json/reader.h>

#include <memory>

namespace zviptv::ctl {

namespace {

using ServiceId = unsigned long long;

/// A text of the guide as a JSON object or array; the text itself if it is neither, null if it is empty.
Json::Value GuideValue(std::string const& text)
{
    Json::Value const plain = ToJson(text);
    std::string const utf8 = plain.asString();
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    try {
        Json::Value value;
        // Half surrogates are not valid UTF-8.
        if (reader->parse(utf8.data(), utf8.data() + utf8.size(), &value, nullptr) &&
            g_utf8_validate(Compact(value).c_str(), -1, nullptr) != FALSE) {
            return value;
        }
    } catch (Json::Exception const&) { // nested too deeply
    }
    return text.empty() ? Json::Value() : plain;
}

/// A text of the guide, exactly as the service sent it.
Answer Text(std::string const& member, std::string const& text, std::string const& nothing)
{
    Answer answer;
    std::string const shown = text.empty() ? nothing : PrintableText(text);
    answer.text = shown.back() == '\n' ? shown : shown + "\n";
    answer.json[member] = GuideValue(text);
    return answer;
}

Answer Exists(Session& session, CommandArguments const& /*arguments*/)
{
    bool exists = false;
    session.Ask("ExistXmlForIPG", [&] { return session.Get<IIPGUtil>().ExistXmlForIPG(exists); });
    Answer answer;
    answer.text = exists ? "the guide has data\n" : "the guide has no data\n";
    answer.json["exist"] = exists;
    return answer;
}

Answer Now(Session& session, CommandArguments const& arguments)
{
    auto const service = arguments.Get<ServiceId>(0);
    std::string programme;
    session.Ask("GetPresentProgram",
                [&] { return session.Get<IIPGUtil>().GetPresentProgram(service, programme); });
    return Text("program", programme, "no programme");
}

/// A warning about missing entries of a list that had to fit into one message; empty if none are missing, or
/// if the service's list is not an array.
std::string MissingEntries(Json::Value const& programmes, int size)
{
    if (!programmes.isArray() || static_cast<int>(programmes.size()) >= size) {
        return std::string();
    }
    return "the list ends after " + std::to_string(programmes.size()) + " of " + std::to_string(size) +
           " programmes, because a message cannot contain more: ask again with a later START";
}

Answer List(Session& session, CommandArguments const& arguments)
{
    auto const service = arguments.Get<ServiceId>(0);
    auto const start = arguments.Get<unsigned int>(1);
    auto const duration = arguments.Get<unsigned int>(2);
    auto& guide = session.Get<IIPGUtil>();
    int size = 0;
    session.Ask("GetProgramListSize",
                [&] { return guide.GetProgramListSize(service, start, duration, size); });
    std::string list;
    session.Ask("GetProgramList", [&] { return guide.GetProgramList(service, start, duration, list); });
    Answer answer = Text("list", list, "no programmes");
    answer.json["size"] = size;
    answer.warning = MissingEntries(answer.json["list"], size);
    return answer;
}

Answer Find(Session& session, CommandArguments const& arguments)
{
    auto const service = arguments.Get<ServiceId>(0);
    auto const event = arguments.Get<unsigned int>(1);
    std::string programme;
    session.Ask("FindProgram",
                [&] { return session.Get<IIPGUtil>().FindProgram(service, event, programme); });
    return Text("program", programme, "no such programme");
}

Answer Get(Session& session, CommandArguments const& arguments)
{
    auto const index = arguments.Get<unsigned int>(0);
    std::string programme;
    session.Ask("GetProgram", [&] { return session.Get<IIPGUtil>().GetProgram(index, programme); });
    return Text("program", programme, "no such programme");
}

Answer Rating(Session& session, CommandArguments const& arguments)
{
    auto const event = arguments.Get<unsigned int>(0);
    std::string rating;
    session.Ask("GetRating", [&] { return session.Get<IIPGUtil>().GetRating(event, rating); });
    return Text("rating", rating, "no rating");
}

Answer Genre(Session& session, CommandArguments const& arguments)
{
    auto const event = arguments.Get<unsigned int>(0);
    std::string genre;
    session.Ask("GetGenre", [&] { return session.Get<IIPGUtil>().GetGenre(event, genre); });
    return Text("genre", genre, "no genre");
}

/// Here the service's "not done" counts as a refusal, because there is no other sign of it.
Answer Load(Session& session, CommandArguments const& arguments)
{
    auto const path = arguments.Get<std::string>(0);
    bool done = false;
    session.Ask("CloneUSBToTV", [&] { return session.Get<IIPGUtil>().CloneUSBToTV(path, done); });
    Answer answer = Done(done, "guide data copied from " + PrintableText(path),
                         "copy guide data from " + PrintableText(path),
                         "it reads the path as its own user; see its own messages");
    answer.json["done"] = done;
    return answer;
}

} // namespace

std::vector<Command> GuideCommands()
{
    CommandArgument const service = {"SERVICE", "Id of the service in the guide"};
    CommandArgument const event = {"EVENT", "Id of the programme's event"};
    CommandArgument const start = {"START", "Start, in seconds since 1970 (UTC)"};
    CommandArgument const duration = {"DURATION", "Length, in seconds"};
    return {
        {"guide", "exists", {}, "Show whether the guide has data", Exists},
        {"guide", "now", {service}, "Show the present programme of a service", Now},
        {"guide", "list", {service, start, duration}, "List programmes of a service, from START on", List},
        {"guide", "find", {service, event}, "Show a programme of a service by its event id", Find},
        {"guide",
         "get",
         {{"INDEX", "Number of the programme in the guide, from 0"}},
         "Show a programme by its number in the guide",
         Get},
        {"guide", "rating", {event}, "Show the rating of a programme", Rating},
        {"guide", "genre", {event}, "Show the genre of a programme", Genre},
        {"guide",
         "load",
         {{"PATH", "Path of a file that the service opens"}},
         "Make the service copy guide data from PATH",
         Load},
    };
}

} // namespace zviptv::ctl
