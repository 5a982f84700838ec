// SPDX-License-Identifier: MIT
#include "RequestCheck.h"

#include "RequestLog.h"
#include "common/ProtocolSchema.h"

#include <zviptv/Protocol.h>

#include <json/reader.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <memory>

namespace zviptv::sim {

namespace key = protocol::key;

namespace {

template <typename Number>
bool IsNumber(std::string const& text)
{
    Number number{};
    auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size();
}

bool IsOfType(std::string const& type, std::string const& text);

/// Whether it is a JSON object with exactly the fields of the record.
bool IsJsonRecord(Json::Value const& record, std::string const& text)
{
    std::unique_ptr<Json::CharReader> const reader(Json::CharReaderBuilder().newCharReader());
    Json::Value object;
    if (!reader->parse(text.data(), text.data() + text.size(), &object, nullptr) || !object.isObject()) {
        return false;
    }
    Json::Value const& fields = record["fields"];
    return object.size() == fields.size() &&
           std::all_of(fields.begin(), fields.end(), [&](Json::Value const& field) {
               Json::Value const& member = object[field["key"].asString()];
               bool const isRightJson = field["json"] == "string" ? member.isString() : member.isUInt64();
               return isRightJson && IsOfType(field["type"].asString(), member.asString());
           });
}

bool IsOfType(std::string const& type, std::string const& text)
{
    if (type == "flag") {
        return text == "0" || text == "1";
    }
    if (type == "u16") {
        return IsNumber<std::uint16_t>(text);
    }
    if (type == "u32") {
        return IsNumber<std::uint32_t>(text);
    }
    if (type == "u64") {
        return IsNumber<std::uint64_t>(text);
    }
    if (type == "i64") {
        return IsNumber<std::int64_t>(text);
    }
    Json::Value const& record = FindEntry(ProtocolSchema()["records"], "name", type);
    if (!record.isNull()) {
        return IsJsonRecord(record, text);
    }
    bool const isEnumeration = !FindEntry(ProtocolSchema()["enumerations"], "name", type).isNull();
    return !(type == "i32" || isEnumeration) || IsNumber<std::int32_t>(text);
}

std::string UnknownFunction(std::string const& name)
{
    for (Json::Value const& endpoint : ProtocolSchema()["endpoints"]) {
        if (!FindEntry(endpoint["functions"], "name", name).isNull()) {
            return name + " is a function of " + endpoint["type"].asString();
        }
    }
    return "unknown function " + Shown(name);
}

/// The keys that a request may have besides "functionname".
Json::Value KeysOf(Json::Value const& function)
{
    Json::Value keys = function["in"];
    if (function["handle"].asBool()) {
        keys.insert(0, FindEntry(ProtocolSchema()["channel"]["in"], "key", key::HandleID));
    }
    return keys;
}

bool HasKey(CMessageBuffer const& request, std::string const& key)
{
    for (int i = 0; i < request.Size(); ++i) {
        if (key == request.GetKey(i)) {
            return true;
        }
    }
    return false;
}

} // namespace

std::vector<std::string> WarningsOf(std::string const& endpoint, CMessageBuffer const& request)
{
    if (!HasKey(request, key::FunctionName)) {
        return {std::string("missing key ") + key::FunctionName};
    }
    std::string const name = request.GetValue(key::FunctionName);
    Json::Value const& functions = FindEntry(ProtocolSchema()["endpoints"], "type", endpoint)["functions"];
    Json::Value const& function = FindEntry(functions, "name", name);
    if (function.isNull()) {
        return {UnknownFunction(name)};
    }
    std::vector<std::string> warnings;
    Json::Value const keys = KeysOf(function);
    for (Json::Value const& described : keys) {
        std::string const key = described["key"].asString();
        std::string const type = described["type"].asString();
        if (!HasKey(request, key)) {
            if (!described["optional"].asBool() && type != "text") { // empty texts are dropped on receipt
                warnings.push_back("missing key " + key);
            }
        } else if (!IsOfType(type, request.GetValue(key.c_str()))) {
            warnings.push_back(key + " is not of the type " + type);
        }
    }
    std::map<std::string, int> counts;
    for (int i = 0; i < request.Size(); ++i) {
        std::string const key = request.GetKey(i);
        int const count = ++counts[key];
        if (count == 2) {
            warnings.push_back("repeated key " + Shown(key));
        } else if (count == 1 && key != key::FunctionName && FindEntry(keys, "key", key).isNull()) {
            warnings.push_back("unexpected key " + Shown(key));
        }
    }
    return warnings;
}

std::vector<std::string> DescribedFunctions()
{
    std::vector<std::string> names;
    for (Json::Value const& endpoint : ProtocolSchema()["endpoints"]) {
        for (Json::Value const& function : endpoint["functions"]) {
            names.push_back(function["name"].asString());
        }
    }
    return names;
}

} // namespace zviptv::sim
