// SPDX-License-Identifier: MIT
#include "client/guide/ProgrammeJson.h"

#include "glib/Utf8.h"

#include <zviptv/Protocol.h>

#include <json/json.h>

#include <charconv>
#include <limits>
#include <memory>

namespace zviptv::client {

namespace {

namespace key = protocol::key;

/// Reads the members of an object. A member that is missing or null leaves the value as it is.
class Members
{
public:
    explicit Members(Json::Value const& object) : m_object(object), m_isGood(object.isObject()) {}

    bool IsGood() const { return m_isGood; }

    void Read(char const* name, std::string& text)
    {
        Json::Value const* const value = Find(name);
        if (value != nullptr && Check(value->isString())) {
            text = ValidUtf8(value->asString());
        }
    }

    void Read(char const* name, std::vector<std::string>& texts)
    {
        Json::Value const* const values = Find(name);
        if (values == nullptr || !Check(values->isArray())) {
            return;
        }
        for (Json::Value const& value : *values) {
            if (Check(value.isString())) {
                texts.push_back(ValidUtf8(value.asString()));
            }
        }
    }

    void Read(char const* name, std::uint32_t& number)
    {
        Json::Value const* const value = Find(name);
        if (value != nullptr && Check(value->isUInt())) {
            number = value->asUInt();
        }
    }

    void Read(char const* name, std::optional<int>& number)
    {
        Json::Value const* const value = Find(name);
        if (value != nullptr && Check(value->isInt())) {
            number = value->asInt();
        }
    }

    /// A 64-bit number as decimal digits.
    void ReadDigits(char const* name, std::uint64_t& number)
    {
        std::string text;
        Read(name, text);
        if (!text.empty()) {
            auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
            Check(error == std::errc() && end == text.data() + text.size());
        }
    }

    /// Any value, by a function that returns false if it is malformed.
    template <class Reader>
    void ReadBy(char const* name, Reader const& read)
    {
        if (Json::Value const* const value = Find(name)) {
            Check(read(*value));
        }
    }

private:
    Json::Value const* Find(char const* name) const
    {
        if (!m_isGood || !m_object.isMember(name) || m_object[name].isNull()) {
            return nullptr;
        }
        return &m_object[name];
    }

    bool Check(bool isGood)
    {
        m_isGood = m_isGood && isGood;
        return isGood;
    }

    Json::Value const& m_object;
    bool m_isGood;
};

// For lists of objects.
bool Read(Json::Value const& json, std::string& text);
bool Read(Json::Value const& json, Programme& programme);

bool Read(Json::Value const& json, ProgrammeRating& rating)
{
    Members members(json);
    members.Read("system", rating.system);
    members.Read("value", rating.value);
    members.Read("minimum_age", rating.minimumAge);
    return members.IsGood();
}

bool Read(Json::Value const& json, Translation& translation)
{
    Members members(json);
    members.Read("language", translation.language);
    members.Read("title", translation.title);
    members.Read("subtitle", translation.subtitle);
    members.Read("description", translation.description);
    members.Read("genres", translation.genres);
    return members.IsGood();
}

template <class Element>
bool Read(Json::Value const& json, std::vector<Element>& elements)
{
    if (!json.isArray()) {
        return false;
    }
    for (Json::Value const& element : json) {
        if (!Read(element, elements.emplace_back())) {
            return false;
        }
    }
    return true;
}

bool Read(Json::Value const& json, std::string& text)
{
    text = json.isString() ? ValidUtf8(json.asString()) : std::string();
    return json.isString();
}

bool Read(Json::Value const& json, Programme& programme)
{
    Members members(json);
    std::uint32_t start = 0;
    std::uint32_t duration = 0;
    members.ReadDigits(key::JsonServiceId, programme.serviceId);
    members.Read(key::JsonEventId, programme.eventId);
    members.Read(key::JsonStartTime, start);
    members.Read(key::JsonDuration, duration);
    members.Read("channel", programme.channel);
    members.Read("title", programme.title);
    members.Read("subtitle", programme.subtitle);
    members.Read("description", programme.description);
    members.Read("language", programme.language);
    members.Read("episode", programme.episode);
    members.Read("icon", programme.icon);
    members.Read("genres", programme.genres);
    members.ReadBy("rating",
                   [&](Json::Value const& value) { return Read(value, programme.rating.emplace()); });
    members.ReadBy("translations",
                   [&](Json::Value const& value) { return Read(value, programme.translations); });
    programme.start = std::chrono::system_clock::time_point(std::chrono::seconds(start));
    programme.duration = std::chrono::seconds(duration);
    return members.IsGood();
}

/// Null JSON for malformed text; JsonCpp throws for text that is nested too deeply.
std::optional<Json::Value> Parse(std::string_view text)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["strictRoot"] = false; // null is nothing
    std::unique_ptr<Json::CharReader> const reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &value, &errors)) {
            return value;
        }
    } catch (Json::Exception const&) { // the text is nested too deeply
    }
    return std::nullopt;
}

template <class Value>
bool ReadOptional(std::string_view text, std::optional<Value>& value)
{
    value.reset();
    if (text.empty()) {
        return true;
    }
    std::optional<Json::Value> const json = Parse(text);
    if (!json) {
        return false;
    }
    return json->isNull() || Read(*json, value.emplace());
}

template <class Element>
bool ReadList(std::string_view text, std::vector<Element>& elements)
{
    elements.clear();
    if (text.empty()) {
        return true;
    }
    std::optional<Json::Value> const json = Parse(text);
    return json && Read(*json, elements);
}

std::optional<Json::Value::UInt> ToUInt32(std::chrono::seconds time)
{
    if (time.count() < 0 || time.count() > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    return static_cast<Json::Value::UInt>(time.count());
}

} // namespace

std::optional<std::string> ToJson(ProgrammeId const& programme)
{
    auto const start = ToUInt32(std::chrono::floor<std::chrono::seconds>(programme.start.time_since_epoch()));
    auto const duration = ToUInt32(programme.duration);
    if (!start || !duration) {
        return std::nullopt;
    }
    std::uint32_t const comparedBits = 0xFFFF;
    Json::Value json;
    json[key::JsonServiceId] = std::to_string(programme.serviceId);
    json[key::JsonEventId] = Json::Value::UInt(programme.eventId & comparedBits);
    json[key::JsonStartTime] = *start;
    json[key::JsonDuration] = *duration;
    return json.toStyledString();
}

bool FromJson(std::string_view json, std::optional<Programme>& programme)
{
    return ReadOptional(json, programme);
}

bool FromJson(std::string_view json, std::optional<ProgrammeRating>& rating)
{
    return ReadOptional(json, rating);
}

bool FromJson(std::string_view json, std::vector<std::string>& texts)
{
    return ReadList(json, texts);
}

bool FromJson(std::string_view json, std::vector<Programme>& programmes)
{
    return ReadList(json, programmes);
}

} // namespace zviptv::client
