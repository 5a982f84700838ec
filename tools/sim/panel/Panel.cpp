// SPDX-License-Identifier: MIT
#include "Panel.h"

#include "MediaKinds.h"
#include "common/ProtocolSchema.h"
#include "common/VariantJson.h"
#include "verbs/Verbs.h"

#include <json/reader.h>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace zviptv::sim {

namespace {

/// Reads the properties that change continuously and are not announced.
constexpr std::chrono::milliseconds ReadPeriod{500};

constexpr unsigned Done = SOUP_STATUS_OK;
constexpr unsigned Malformed = SOUP_STATUS_BAD_REQUEST;
constexpr unsigned Refused = SOUP_STATUS_CONFLICT;

/// Null if the text is malformed.
Json::Value ParseJson(std::string const& text)
try {
    std::unique_ptr<Json::CharReader> const reader(Json::CharReaderBuilder().newCharReader());
    Json::Value json;
    return reader->parse(text.data(), text.data() + text.size(), &json, nullptr) ? json : Json::Value();
} catch (Json::Exception const&) { // it is nested too deeply
    return {};
}

/// The words of {"words": ["seek", "5"]}. @throws std::invalid_argument
std::vector<std::string> WordsOf(std::string const& body)
{
    Json::Value const json = ParseJson(body);
    if (!json.isObject() || !json["words"].isArray()) {
        throw std::invalid_argument("the request is malformed: send {\"words\": [\"seek\", \"5\"]}");
    }
    std::vector<std::string> words;
    for (Json::Value const& word : json["words"]) {
        if (!word.isString()) {
            throw std::invalid_argument("a word is not a text: send {\"words\": [\"seek\", \"5\"]}");
        }
        words.push_back(word.asString());
    }
    return words;
}

std::string ErrorJson(std::string const& error)
{
    Json::Value json(Json::objectValue);
    json["error"] = error;
    return ToText(json);
}

/// The verbs that the page offers.
std::string VerbsJson()
{
    Json::Value list(Json::arrayValue);
    for (verbs::Verb const& verb : verbs::Verbs()) {
        Json::Value json(Json::objectValue);
        json["words"] = verb.words;
        json["synopsis"] = verbs::Synopsis(verb);
        json["help"] = verb.help;
        list.append(json);
    }
    return ToText(list);
}

} // namespace

Panel::Panel(unsigned port, std::string const& bus, PanelLink link)
    : m_link(std::move(link)), m_traffic(bus, m_feed, [this] { m_pages.Advance(); }), m_server(port),
      m_picture(MakeStream(PictureKind(), "PanelPicture")), m_sound(MakeStream(SoundKind(), "PanelSound")),
      m_self(std::make_shared<Panel*>(this))
{
    m_server.AddSocket("api/picture",
                       [this](SoupWebsocketConnection* connection) { m_picture.Add(connection); });
    m_server.AddSocket("api/sound", [this](SoupWebsocketConnection* connection) { m_sound.Add(connection); });
    m_server.AddPost("api/verb", [this](std::string const& body, PanelServer::Answer const& answer) {
        OnVerb(body, answer);
    });
    m_server.AddSocket("api/events", [this](SoupWebsocketConnection* connection) { AddPage(connection); });
    m_server.AddFile("api/verbs.json", [](std::string const&) { return VerbsJson(); });
    m_server.AddFile("api/protocol.json", [](std::string const&) { return ToText(ProtocolSchema()); });
    m_server.AddFile("api/message/", [this](std::string const& number) { return m_traffic.Details(number); });
}

Panel::~Panel() = default;

/// Runs a verb with the words of `zviptvctl sim`, by the same call.
void Panel::OnVerb(std::string const& body, PanelServer::Answer const& answer)
try {
    verbs::Command const command = verbs::Parse(WordsOf(body));
    m_link.call(command.verb->method, command.parameters.get(),
                [answer, weak = std::weak_ptr<Panel*>(m_self)](std::string const& error) {
                    if (auto const self = weak.lock()) {
                        (*self)->Read();
                    }
                    error.empty() ? answer(Done, "{}") : answer(Refused, ErrorJson(error));
                });
} catch (std::invalid_argument const& failure) {
    answer(Malformed, ErrorJson(failure.what()));
}

void Panel::AddPage(SoupWebsocketConnection* connection)
{
    m_pages.Add(connection);
    Read();
    m_reading = LoopSource::Every(ReadPeriod, [this] {
        if (m_pages.IsEmpty()) {
            m_reading.Stop();
        } else {
            Read();
        }
    });
}

void Panel::Read()
{
    m_link.read([weak = std::weak_ptr<Panel*>(m_self)](GVariant* properties) {
        if (auto const self = weak.lock()) {
            (*self)->Set(properties);
        }
    });
}

void Panel::Set(GVariant* properties)
{
    Json::Value const json = ToJson(properties);
    for (std::string const& name : json.getMemberNames()) {
        m_feed.Set(name, json[name]);
    }
    NotePosition(json);
    RefreshStill(json);
    m_pages.Advance();
}

void Panel::NotePosition(Json::Value const& properties)
{
    double const position = properties.get("Position", m_position).asDouble();
    double const played = std::max(0.0, position - m_position);
    m_position = position;
    m_picture.NotePlayed(played);
    m_sound.NotePlayed(played);
}

/// A paused television shows another picture after a seek, with another subtitle, or when it plays again.
void Panel::RefreshStill(Json::Value const& properties)
{
    Json::Value still = m_still;
    for (char const* const name : {"Paused", "Position", "Subtitle"}) {
        still[name] = properties.get(name, still[name]);
    }
    bool const isPaused = still["Paused"].asBool();
    if (still != m_still && (isPaused || m_still["Paused"].asBool())) {
        m_picture.Refresh();
    }
    m_still = std::move(still);
}

/// `property` shows the pages the state of the medium.
MediaStream Panel::MakeStream(MediaStream::Kind kind, char const* property)
{
    auto const watch = [this](std::string const& what, FileHandle const& pipe,
                              MediaStream::Watched const& watched) {
        m_link.watch(what, pipe, [watched](GVariant* content) {
            watched(content == nullptr ? Json::Value() : ToJson(content));
        });
    };
    return {std::move(kind), watch, [this, property](Json::Value const& content) {
                m_feed.Set(property, content);
                m_pages.Advance();
            }};
}

void Panel::OnSignal(std::string const& /*interface*/, std::string const& name, GVariant* body)
{
    if (name == "PropertiesChanged") {
        Owned<GVariant> const properties(g_variant_get_child_value(body, 1));
        Set(properties.get());
    } else if (name == "Captions") {
        Owned<GVariant> const captions(g_variant_get_child_value(body, 0));
        Set(captions.get());
    }
}

} // namespace zviptv::sim
