// SPDX-License-Identifier: MIT
#include "Pattern.h"

#include "common/ProtocolSchema.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

namespace zviptv::sim {

namespace {

struct Flag
{
    char const* word;
    char const* value;
};

constexpr Flag Flags[] = {{"1", "1"}, {"on", "1"}, {"true", "1"}, {"0", "0"}, {"off", "0"}, {"false", "0"}};

/// "one, two, three"
std::string List(Json::Value const& entries, char const* name)
{
    std::string list;
    for (Json::Value const& entry : entries) {
        list += (list.empty() ? "" : ", ") + entry[name].asString();
    }
    return list;
}

Json::Value const& FindFunction(std::string const& name)
{
    for (Json::Value const& endpoint : ProtocolSchema()["endpoints"]) {
        Json::Value const& function = FindEntry(endpoint["functions"], "name", name);
        if (!function.isNull()) {
            return function;
        }
    }
    return Json::Value::nullSingleton();
}

std::string AllFunctions()
{
    std::string list;
    for (Json::Value const& endpoint : ProtocolSchema()["endpoints"]) {
        list += (list.empty() ? "" : ", ") + List(endpoint["functions"], "name");
    }
    return list;
}

/// The number in its shortest decimal form.
template <typename Number>
std::optional<std::string> ReadNumber(std::string const& text)
{
    Number number{};
    auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isNumber = failure == std::errc() && end == text.data() + text.size();
    return isNumber ? std::optional(std::to_string(number)) : std::nullopt;
}

struct Integer
{
    char const* type;
    std::optional<std::string> (*read)(std::string const& text);
    char const* accepted;
};

constexpr Integer Integers[] = {
    {"u16", ReadNumber<std::uint16_t>, "a number from 0 to 65535"},
    {"u32", ReadNumber<std::uint32_t>, "a number from 0 to 4294967295"},
    {"u64", ReadNumber<std::uint64_t>, "a number from 0 to 18446744073709551615"},
    {"i32", ReadNumber<std::int32_t>, "a number from -2147483648 to 2147483647"},
    {"i64", ReadNumber<std::int64_t>, "a number from -9223372036854775808 to 9223372036854775807"},
};

/// The value in a normal form, which is the same for equal values; or nullopt and the accepted values.
struct Meaning
{
    std::optional<std::string> value;
    std::string accepted;
};

Meaning MeaningOf(std::string const& type, std::string const& text)
{
    if (type == "flag") {
        auto const* const flag = std::find_if(std::begin(Flags), std::end(Flags),
                                              [&text](Flag const& one) { return text == one.word; });
        return {flag == std::end(Flags) ? std::nullopt : std::optional<std::string>(flag->value),
                "1, 0, on, off, true or false"};
    }
    auto const* const integer = std::find_if(std::begin(Integers), std::end(Integers),
                                             [&type](Integer const& one) { return type == one.type; });
    if (integer != std::end(Integers)) {
        return {integer->read(text), integer->accepted};
    }
    Json::Value const& enumeration = FindEntry(ProtocolSchema()["enumerations"], "name", type);
    if (enumeration.isNull()) {
        return {text, ""}; // a text, or a record, which is compared as text
    }
    Json::Value const& value = FindEntry(enumeration["values"], "name", text);
    return {value.isNull() ? ReadNumber<std::int32_t>(text) : value["value"].asString(),
            "a number, or " + List(enumeration["values"], "name")};
}

std::string TypeOf(std::string const& function, std::string const& key)
{
    return FindEntry(FindFunction(function)["in"], "key", key)["type"].asString();
}

} // namespace

std::string ToText(SeenRequest const& request)
{
    std::string text = request.function;
    for (auto const& [key, value] : request.arguments) {
        text += " " + key + "=" + value;
    }
    return text;
}

Pattern Pattern::Take(std::vector<Word> const& words, std::size_t& next)
{
    Pattern pattern;
    Word const& name = words.at(next++);
    if (FindFunction(name.text).isNull()) {
        throw LineError(name.column, "unknown method '" + name.text + "': use " + AllFunctions());
    }
    pattern.m_function = name.text;
    for (; next < words.size() && words[next].text.find('=') != std::string::npos; ++next) {
        pattern.TakeValue(words[next]);
    }
    return pattern;
}

void Pattern::TakeValue(Word const& word)
{
    std::size_t const equals = word.text.find('=');
    std::string const key = word.text.substr(0, equals);
    Json::Value const& keys = FindFunction(m_function)["in"];
    if (FindEntry(keys, "key", key).isNull()) {
        throw LineError(word.column,
                        m_function + " has no key '" + key +
                            "': " + (keys.empty() ? "it takes no KEY=VALUE" : "use " + List(keys, "key")));
    }
    std::string const text = word.text.substr(equals + 1);
    Meaning const meaning = MeaningOf(TypeOf(m_function, key), text);
    if (!meaning.value) {
        throw LineError(word.column + static_cast<unsigned>(key.size()) + 1,
                        "'" + text + "' is not a value of " + key + ": use " + meaning.accepted);
    }
    if (!m_values.emplace(key, *meaning.value).second) {
        throw LineError(word.column, "the key '" + key + "' is given more than once: use it once");
    }
}

bool Pattern::Matches(SeenRequest const& request) const
{
    return request.function == m_function &&
           std::all_of(m_values.begin(), m_values.end(), [&](auto const& wanted) {
               auto const found = request.arguments.find(wanted.first);
               return found != request.arguments.end() &&
                      MeaningOf(TypeOf(m_function, wanted.first), found->second).value == wanted.second;
           });
}

} // namespace zviptv::sim
