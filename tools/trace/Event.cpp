// SPDX-License-Identifier: MIT
#include "Event.h"

namespace zviptv::trace {

namespace {

Json::Value ToJson(Application const& application)
{
    Json::Value json(Json::objectValue);
    json["bus"] = TextToJson(application.busName);
    if (!application.name.empty()) {
        json["name"] = TextToJson(application.name);
    }
    if (application.processId != 0) {
        json["process"] = application.processId;
    }
    if (!application.program.empty()) {
        json["program"] = TextToJson(application.program);
    }
    return json;
}

void AddText(Json::Value& json, char const* member, std::string const& text)
{
    if (!text.empty()) {
        json[member] = TextToJson(text);
    }
}

template <typename Number>
void AddNumber(Json::Value& json, char const* member, std::optional<Number> const& number)
{
    if (number) {
        json[member] = Json::Int64{static_cast<std::int64_t>(*number)};
    }
}

void AddValues(Json::Value& json, Event const& event)
{
    if (event.values.empty()) {
        return;
    }
    Json::Value& values = json["values"] = Json::Value(Json::objectValue);
    for (Value const& value : event.values) {
        std::string const key = TextToJson(value.key).asString();
        if (values.isMember(key)) {
            continue; // the first one counts
        }
        values[key] = value.json;
        if (!value.name.empty()) {
            values[key + "Name"] = value.name;
        }
    }
}

} // namespace

char const* NameOf(EventKind kind)
{
    static constexpr char const* names[] = {"request",      "reply",  "error", "notification",
                                            "announcement", "answer", "loss",  "arrival"};
    return names[static_cast<std::size_t>(kind)];
}

Json::Value ToJson(Event const& event)
{
    Json::Value json(Json::objectValue);
    json["number"] = Json::UInt64{event.number};
    json["time"] = Json::Int64{event.time};
    json["message"] = NameOf(event.kind);
    if (event.application != nullptr) {
        json["application"] = ToJson(*event.application);
    }
    AddText(json, "service", event.service);
    json["fromService"] = event.isFromService;
    AddText(json, "endpoint", event.endpoint);
    AddText(json, "function", event.function);
    json["serial"] = event.serial;
    if (event.handle != 0) {
        json["handle"] = event.handle;
    }
    AddValues(json, event);
    if (event.request != 0) {
        json["request"] = Json::UInt64{event.request};
    }
    if (event.result) {
        json["result"] = *event.result;
    }
    AddNumber(json, "latency", event.latency);
    AddNumber(json, "pid", event.pid);
    AddNumber(json, "pts", event.pts);
    AddNumber(json, "size", event.size);
    AddText(json, "error", event.errorName);
    AddText(json, "errorText", event.errorText);
    for (std::string const& problem : event.problems) {
        json["problems"].append(TextToJson(problem));
    }
    return json;
}

} // namespace zviptv::trace
