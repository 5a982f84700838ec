// SPDX-License-Identifier: MIT
#include "guide/GuideJson.h"

#include <json/json.h>

namespace zviptv::sim {

namespace {

Json::Value ToJson(std::vector<std::string> const& texts)
{
    Json::Value array(Json::arrayValue);
    for (std::string const& text : texts) {
        array.append(text);
    }
    return array;
}

Json::Value ToJson(GuideVersion const& version)
{
    Json::Value object(Json::objectValue);
    object["language"] = version.language;
    object["title"] = version.title;
    object["subtitle"] = version.subtitle;
    object["description"] = version.description;
    object["genres"] = ToJson(version.genres);
    return object;
}

Json::Value ToJson(GuideRating const& rating)
{
    Json::Value object(Json::objectValue);
    object["system"] = rating.system;
    object["value"] = rating.value;
    object["minimum_age"] = rating.minimumAge ? Json::Value(*rating.minimumAge) : Json::Value();
    return object;
}

Json::Value ToJson(Guide const& guide, std::uint32_t position)
{
    GuideEntry const& entry = guide.At(position);
    GuideService const& service = guide.ServiceAt(position);
    Json::Value object = ToJson(entry.main);
    object["service_id"] = std::to_string(service.id);
    object["channel"] = service.name;
    object["event_id"] = entry.eventId;
    object["start_time"] = entry.start;
    object["duration"] = entry.duration;
    object["rating"] = entry.rating ? ToJson(*entry.rating) : Json::Value();
    object["icon"] = entry.icon;
    object["episode"] = entry.episode;
    object["translations"] = Json::Value(Json::arrayValue);
    for (GuideVersion const& version : entry.translations) {
        object["translations"].append(ToJson(version));
    }
    return object;
}

std::string Write(Json::Value const& value)
{
    Json::StreamWriterBuilder style;
    style["indentation"] = "";
    style["commentStyle"] = "None";
    style["emitUTF8"] = true;
    return Json::writeString(style, value);
}

} // namespace

std::string ProgrammeJson(Guide const& guide, std::uint32_t position)
{
    return Write(ToJson(guide, position));
}

std::string ProgrammesJson(Guide const& guide, GuideRange range, std::size_t largest)
{
    constexpr std::size_t Signs = 2; // a comma and the closing bracket
    std::string list = "[";
    for (std::uint32_t i = 0; i < range.count; ++i) {
        std::string const programme = ProgrammeJson(guide, range.first + i);
        if (list.size() + programme.size() + Signs > largest) {
            break;
        }
        list += (i == 0 ? "" : ",") + programme;
    }
    return list + "]";
}

std::string RatingJson(Guide const& guide, std::uint32_t position)
{
    auto const& rating = guide.At(position).rating;
    return rating ? Write(ToJson(*rating)) : std::string();
}

std::string GenresJson(Guide const& guide, std::uint32_t position)
{
    return Write(ToJson(guide.At(position).main.genres));
}

} // namespace zviptv::sim
