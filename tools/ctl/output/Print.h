// SPDX-License-Identifier: MIT
#pragma once

#include "ProtocolTypes.h"

#include <json/value.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace zviptv::ctl {

// Values of the interface as text for people and as JSON for programs. Nothing here talks to the service.

/// "0x" and `digits` digits.
std::string ToHex(std::uint64_t number, unsigned digits);

/// The number with its name: "2 (PLAYING)".
std::string ToText(EnumInfo const& info, std::int32_t value);

/// The ISO 639 code, or the number if it is not a language.
std::string ToText(EZVLanguageCode language);

std::string ToText(bool flag);

/// One character; \xNN if it is not a character.
std::string ToText(char character);

std::string ToText(std::string const& text);

template <typename Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
std::string ToText(Number number)
{
    return std::to_string(number);
}

template <typename Enumeration, std::enable_if_t<std::is_enum_v<Enumeration>, int> = 0>
std::string ToText(Enumeration value)
{
    return ToText(InfoOf<Enumeration>(), static_cast<std::int32_t>(value));
}

template <typename Value>
std::string ToText(Value value, [[maybe_unused]] Notation notation)
{
    if constexpr (std::is_unsigned_v<Value>) {
        if (notation == Notation::Hexadecimal) {
            return ToHex(value, 2 * sizeof(Value));
        }
    }
    return ToText(value);
}

/// Replaces bytes that are not UTF-8 by U+FFFD.
Json::Value ToJson(std::string const& text);

/// A byte above 127 becomes the character U+0080 to U+00FF.
Json::Value ToJson(char character);

Json::Value ToJson(bool flag);

template <typename Number, std::enable_if_t<std::is_integral_v<Number>, int> = 0>
Json::Value ToJson(Number number)
{
    if constexpr (std::is_signed_v<Number>) {
        return Json::Value(Json::Int64{number});
    } else {
        return Json::Value(Json::UInt64{number});
    }
}

template <typename Enumeration, std::enable_if_t<std::is_enum_v<Enumeration>, int> = 0>
Json::Value ToJson(Enumeration value)
{
    return Json::Value(static_cast<Json::Int>(value));
}

template <typename Record, std::enable_if_t<std::is_class_v<Record>, int> = 0>
Json::Value ToJson(Record const& record);

template <typename Record>
Json::Value ToJson(std::vector<Record> const& records);

/// A language is two members: its number, and under "<name>Code" its ISO 639 code, empty if it has none.
template <typename Value>
void AddMember(Json::Value& object, std::string const& name, Value const& value)
{
    object[name] = ToJson(value);
    if constexpr (std::is_same_v<Value, EZVLanguageCode>) {
        object[name + "Code"] = ZVLanguageToISO639(value);
    }
}

template <typename Record, std::enable_if_t<std::is_class_v<Record>, int>>
Json::Value ToJson(Record const& record)
{
    Json::Value object(Json::objectValue);
    ForEachField<Record>([&](auto const& field) { AddMember(object, field.name, record.*field.member); });
    return object;
}

template <typename Record>
Json::Value ToJson(std::vector<Record> const& records)
{
    Json::Value array(Json::arrayValue);
    for (Record const& record : records) {
        array.append(ToJson(record));
    }
    return array;
}

/// "name: value"; for a record, one line per field: "name.field: value".
template <typename Value>
void AddLines(std::string& text, std::string const& name, Value const& value)
{
    if constexpr (std::is_class_v<Value> && !std::is_same_v<Value, std::string>) {
        ForEachField<Value>([&](auto const& field) {
            text += name + "." + field.name + ": " + ToText(value.*field.member, field.notation) + "\n";
        });
    } else {
        text += name + ": " + ToText(value) + "\n";
    }
}

/// The number of records, then the fields of each: "name[0].field: value".
template <typename Record>
void AddLines(std::string& text, std::string const& name, std::vector<Record> const& records)
{
    text += name + ": " + std::to_string(records.size()) + "\n";
    for (std::size_t index = 0; index < records.size(); ++index) {
        AddLines(text, name + "[" + std::to_string(index) + "]", records[index]);
    }
}

} // namespace zviptv::ctl
