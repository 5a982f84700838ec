// SPDX-License-Identifier: MIT
#include "Values.h"

#include "common/PrintableText.h"
#include "glib/Utf8.h"

namespace zviptv::trace {

namespace {

bool IsBlank(char character)
{
    return character == ' ' || (character >= '\t' && character <= '\r');
}

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

std::string Language(std::int64_t number)
{
    std::string code;
    for (unsigned const shift : {16U, 8U, 0U}) {
        auto const letter = static_cast<char>(static_cast<std::uint64_t>(number) >> shift & 0xFFU);
        if (letter < 'a' || letter > 'z') {
            return {};
        }
        code += letter;
    }
    return code;
}

std::string NameOf(Enumeration const& enumeration, std::int64_t number)
{
    std::string code = enumeration.isLanguage ? Language(number) : std::string();
    auto const found = enumeration.names.find(number);
    return !code.empty() || found == enumeration.names.end() ? code : found->second;
}

/// A text on one line, in quotation marks if its end would be unclear.
std::string OneLine(std::string_view text)
{
    std::string line = EscapeText(text);
    if (!line.empty() && line.find_first_of(" \"") == std::string::npos) {
        return line;
    }
    for (std::size_t at = 0; (at = line.find('"', at)) != std::string::npos; at += 2) {
        line.insert(at, 1, '\\');
    }
    return '"' + line + '"';
}

std::string Hexadecimal(std::uint64_t number, std::size_t bytes)
{
    static constexpr char Digits[] = "0123456789abcdef";
    std::string text;
    for (std::size_t shift = bytes * 8; shift > 0;) {
        shift -= 4;
        text += Digits[number >> shift & 0xFU];
    }
    return "0x" + text;
}

void DecodeNumber(Value& value, ValueType const& type, std::string_view text, Problems& problems)
{
    std::int64_t number = 0;
    if (!ReadNumber(text, number)) {
        value.text = OneLine(text);
        value.json = TextToJson(text);
        problems.push_back(value.key + " is not a number");
        return;
    }
    if (type.form == Form::Flag) {
        value.text = number != 0 ? "true" : "false";
        value.json = number != 0;
    } else if (type.form == Form::Unsigned) {
        value.json = Json::UInt64{static_cast<std::uint64_t>(number)};
        value.text = std::to_string(static_cast<std::uint64_t>(number));
    } else {
        value.json = Json::Int64{number};
        value.name = type.enumeration != nullptr ? NameOf(*type.enumeration, number) : std::string();
        value.text = value.name.empty() ? std::to_string(number) : value.name;
    }
}

/// Records have the byte order of the platforms, which is little endian on all.
std::uint64_t LittleEndian(std::string_view bytes)
{
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i > 0; --i) {
        number = number << 8U | static_cast<std::uint8_t>(bytes[i - 1]);
    }
    return number;
}

void AddRecord(Value& value, Record const& record, std::string_view bytes)
{
    Json::Value json(Json::objectValue);
    std::string text;
    for (RecordField const& field : record.fields) {
        std::uint64_t const number = LittleEndian(bytes.substr(field.offset, field.size));
        text += (text.empty() ? "" : " ") + field.name + "=";
        if (field.enumeration == nullptr) {
            json[field.name] = Json::UInt64{number};
            text += field.isHexadecimal ? Hexadecimal(number, field.size) : std::to_string(number);
            continue;
        }
        auto const signedNumber = static_cast<std::int32_t>(number);
        std::string const name = NameOf(*field.enumeration, signedNumber);
        json[field.name] = signedNumber;
        json[field.name + "Name"] = name;
        text += name.empty() ? std::to_string(signedNumber) : name;
    }
    value.text += (value.text.empty() ? "{" : " {") + text + "}";
    value.json.append(std::move(json));
}

void DecodeRecords(Value& value, ValueType const& type, std::string_view bytes, Problems& problems)
{
    std::size_t const size = type.record->size;
    value.json = Json::Value(Json::arrayValue);
    if (bytes.size() < size && !bytes.empty()) {
        problems.push_back(value.key + " has " + std::to_string(bytes.size()) + " bytes, not " +
                           std::to_string(size));
    }
    for (; bytes.size() >= size; bytes.remove_prefix(size)) {
        AddRecord(value, *type.record, bytes);
    }
    if (!type.isList) {
        value.json = value.json.empty() ? Json::Value() : Json::Value(value.json[0]);
    }
    if (value.text.empty()) {
        value.text = "{}";
    }
}

} // namespace

bool ReadNumber(std::string_view text, std::int64_t& number)
{
    while (!text.empty() && IsBlank(text.front())) {
        text.remove_prefix(1);
    }
    bool const isNegative = !text.empty() && text.front() == '-';
    if (!text.empty() && (isNegative || text.front() == '+')) {
        text.remove_prefix(1);
    }
    if (text.empty() || !IsDigit(text.front())) {
        return false;
    }
    std::uint64_t magnitude = 0;
    for (; !text.empty() && IsDigit(text.front()); text.remove_prefix(1)) {
        magnitude = magnitude * 10 + static_cast<std::uint64_t>(text.front() - '0');
    }
    number = static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude);
    return true;
}

Json::Value TextToJson(std::string_view text)
{
    return ValidUtf8(text);
}

Value DecodeUntyped(ParsedEntry const& entry)
{
    return {std::string(entry.key), OneLine(entry.value), TextToJson(entry.value), {}};
}

Value Decode(ParsedEntry const& entry, ValueType const& type, Problems& problems)
{
    Value value;
    value.key = entry.key;
    switch (type.form) {
    case Form::Flag:
    case Form::Signed:
    case Form::Unsigned:
    case Form::Enumeration:
        DecodeNumber(value, type, entry.value, problems);
        break;
    case Form::Bytes:
        value.json = Json::UInt64{entry.value.size()};
        value.text = std::to_string(entry.value.size()) + " bytes";
        break;
    case Form::Record:
        DecodeRecords(value, type, entry.value, problems);
        break;
    case Form::Text:
    case Form::JsonRecord:
        value.text = OneLine(entry.value);
        value.json = TextToJson(entry.value);
        break;
    }
    return value;
}

} // namespace zviptv::trace
