// SPDX-License-Identifier: MIT
#include "guide/ProgrammeKey.h"

#include <charconv>
#include <json/json.h>
#include <limits>

namespace zviptv::sim {

namespace {

constexpr std::size_t MaxRequestSize = 4096;

std::optional<Json::Value> ParseObject(std::string const& text)
{
    if (text.size() > MaxRequestSize) {
        return std::nullopt;
    }
    Json::CharReaderBuilder rules;
    Json::CharReaderBuilder::strictMode(&rules.settings_);
    rules["stackLimit"] = 16;
    std::unique_ptr<Json::CharReader> const reader(rules.newCharReader());
    Json::Value value;
    try {
        if (!reader->parse(text.data(), text.data() + text.size(), &value, nullptr) || !value.isObject()) {
            return std::nullopt;
        }
    } catch (Json::Exception const&) { // nested too deeply
        return std::nullopt;
    }
    return value;
}

std::optional<std::uint64_t> ParseDigits(std::string const& text)
{
    std::uint64_t number = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const whole = error == std::errc() && end == text.data() + text.size();
    return whole ? std::optional<std::uint64_t>(number) : std::nullopt;
}

std::optional<std::uint32_t> Number(Json::Value const& value, std::uint32_t limit)
{
    bool const fits = value.isUInt() && value.asUInt() <= limit;
    return fits ? std::optional<std::uint32_t>(value.asUInt()) : std::nullopt;
}

} // namespace

std::optional<ProgrammeKey> ParseProgrammeKey(std::string const& json)
{
    constexpr std::uint32_t Any = std::numeric_limits<std::uint32_t>::max();
    auto const object = ParseObject(json);
    if (!object || !(*object)["service_id"].isString()) {
        return std::nullopt;
    }
    auto const serviceId = ParseDigits((*object)["service_id"].asString());
    auto const eventId = Number((*object)["event_id"], std::numeric_limits<std::uint16_t>::max());
    auto const start = Number(object->get("start_time", 0u), Any);
    auto const duration = Number(object->get("duration", 0u), Any);
    if (!serviceId || !eventId || !start || !duration) {
        return std::nullopt;
    }
    return ProgrammeKey{*serviceId, static_cast<std::uint16_t>(*eventId), *start};
}

} // namespace zviptv::sim
