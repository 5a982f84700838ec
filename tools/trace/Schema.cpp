// SPDX-License-Identifier: MIT
#include "Schema.h"

#include "common/ProtocolSchema.h"

namespace zviptv::trace {

Schema const& Schema::Get()
{
    static Schema const schema(ProtocolSchema());
    return schema;
}

Schema::Schema(Json::Value const& description)
{
    for (Json::Value const& entry : description["enumerations"]) {
        Enumeration& enumeration = m_enumerations[entry["name"].asString()];
        enumeration.isLanguage = entry["name"] == "EZVLanguageCode";
        for (Json::Value const& value : entry["values"]) {
            enumeration.names[value["value"].asInt64()] = value["name"].asString();
        }
    }
    for (Json::Value const& entry : description["records"]) {
        AddRecord(entry);
    }
    for (Json::Value const& endpoint : description["endpoints"]) {
        Named<Function>& functions = m_endpoints[endpoint["type"].asString()];
        for (char const* const calls : {"functions", "notifications"}) {
            for (Json::Value const& call : endpoint[calls]) {
                functions[call["name"].asString()] = {TypesOf(call["in"]), TypesOf(call["out"])};
            }
        }
    }
    Json::Value const& helper = description["helper"];
    helperName = helper["bus-name"].asString();
    helperInterface = helper["interface"].asString();
    helperMember = helper["member"].asString();
    announcement = {TypesOf(helper["in"]), TypesOf(helper["out"])};
    Json::Value const& channel = description["channel"];
    channelPath = channel["path"].asString();
    channelInterface = channel["interface"].asString();
    requestMember = channel["request"].asString();
    notificationMember = channel["notification"].asString();
    common = TypesOf(channel["in"]);
    common.merge(TypesOf(channel["out"]));
}

Function const* Schema::Find(std::string_view endpoint, std::string_view function) const
{
    auto const functions = m_endpoints.find(endpoint);
    if (functions == m_endpoints.end()) {
        return nullptr;
    }
    auto const found = functions->second.find(function);
    return found == functions->second.end() ? nullptr : &found->second;
}

ValueType Schema::TypeOf(std::string const& name) const
{
    static Named<Form> const forms = {{"flag", Form::Flag},    {"i32", Form::Signed},
                                      {"i64", Form::Signed},   {"u32", Form::Unsigned},
                                      {"u64", Form::Unsigned}, {"bytes", Form::Bytes}};
    ValueType type;
    type.isList = name.size() > 2 && name.compare(name.size() - 2, 2, "[]") == 0;
    std::string const plain = type.isList ? name.substr(0, name.size() - 2) : name;
    auto const enumeration = m_enumerations.find(plain);
    auto const record = m_records.find(plain);
    auto const form = forms.find(plain);
    if (enumeration != m_enumerations.end()) {
        type.form = Form::Enumeration;
        type.enumeration = &enumeration->second;
    } else if (record != m_records.end()) {
        type.form = record->second.size == 0 ? Form::JsonRecord : Form::Record;
        type.record = &record->second;
    } else if (form != forms.end()) {
        type.form = form->second;
    }
    return type;
}

Named<ValueType> Schema::TypesOf(Json::Value const& values) const
{
    Named<ValueType> types;
    for (Json::Value const& value : values) {
        types[value["key"].asString()] = TypeOf(value["type"].asString());
    }
    return types;
}

void Schema::AddRecord(Json::Value const& description)
{
    Record& record = m_records[description["name"].asString()];
    record.size = description.get("size", 0).asUInt();
    for (Json::Value const& field : description["fields"]) {
        ValueType const type = TypeOf(field["type"].asString());
        record.fields.push_back({field["name"].asString(), field.get("offset", 0).asUInt(),
                                 field.get("size", 0).asUInt(), field["notation"] == "hex",
                                 type.enumeration});
    }
}

} // namespace zviptv::trace
