// SPDX-License-Identifier: MIT
#include "verbs/Arguments.h"

#include <charconv>
#include <cstring>
#include <stdexcept>

namespace zviptv::verbs {

namespace {

struct Description
{
    Form form;
    char const* name;
    char const* type;
    char const* accepted;
    double minimum; ///< for numbers
    double maximum;
};

constexpr Description Descriptions[] = {
    {Form::Position, "SECONDS", "d", "a position in seconds, 0 to 1000000", 0, 1e6},
    {Form::Duration, "SECONDS", "d", "a number of seconds, 0 to 1000000", 0, 1e6},
    {Form::FaultTime, "SECONDS", "d", "a number of seconds, 0.001 to 1000000", 0.001, 1e6},
    {Form::Speed, "SPEED", "d", "a speed from 0.01 to 1000", 0.01, 1000},
    {Form::Time, "UNIX-SECONDS", "x", "a number of seconds since 1970, 0 to 4294967295", 0, 4294967295.0},
    {Form::Programme, "NUMBER", "u", "a programme number, 1 to 65535", 1, 65535},
    {Form::Index, "N", "u", "a place in the list, 0 to 65535", 0, 65535},
    {Form::Count, "N", "u", "a number of messages, 1 to 1000000", 1, 1e6},
    {Form::Input, "INPUT", "s", "an input like that of --ts", 0, 0},
    {Form::Fault, "METHOD=FAULT", "s", "METHOD=FAULT like that of --fault", 0, 0},
    {Form::Lockable, "programme|service", "s", "programme or service", 0, 0},
    {Form::Mutable, "audio|video", "s", "audio or video", 0, 0},
    {Form::Track, "audio|subtitle", "s", "audio or subtitle", 0, 0},
    {Form::Switch, "on|off", "b", "on or off", 0, 0},
};

Description const& Describe(Form form)
{
    for (Description const& description : Descriptions) {
        if (description.form == form) {
            return description;
        }
    }
    throw std::logic_error("a form without a description");
}

[[noreturn]] void Refuse(Form form, std::string const& text)
{
    throw std::invalid_argument("'" + text + "' is not " + Accepted(form));
}

/// Whether the text is one of the words in "one|two".
bool IsAmong(char const* words, std::string const& text)
{
    std::string const all = "|" + std::string(words) + "|";
    return !text.empty() && text.find('|') == std::string::npos &&
           all.find("|" + text + "|") != std::string::npos;
}

bool IsChoice(Form form)
{
    return form == Form::Lockable || form == Form::Mutable || form == Form::Track;
}

template <typename Number>
bool Read(std::string const& text, Number& number)
{
    auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size();
}

/// NaN is in no range.
bool IsInRange(Description const& description, double number)
{
    return number >= description.minimum && number <= description.maximum;
}

double ToNumber(GVariant* value)
{
    switch (g_variant_get_type_string(value)[0]) {
    case 'd':
        return g_variant_get_double(value);
    case 'x':
        return static_cast<double>(g_variant_get_int64(value));
    default:
        return g_variant_get_uint32(value);
    }
}

GVariant* NewNumber(Form form, std::string const& text)
{
    Description const& description = Describe(form);
    if (description.type[0] == 'd') {
        double number = 0;
        if (Read(text, number) && IsInRange(description, number)) {
            return g_variant_new_double(number);
        }
    } else if (gint64 number = 0; Read(text, number) && IsInRange(description, static_cast<double>(number))) {
        return description.type[0] == 'x' ? g_variant_new_int64(number)
                                          : g_variant_new_uint32(static_cast<guint32>(number));
    }
    Refuse(form, text);
}

GVariant* NewValue(Form form, std::string const& text)
{
    Description const& description = Describe(form);
    switch (description.type[0]) {
    case 's':
        return g_variant_new_string(text.c_str());
    case 'b':
        if (!IsAmong(description.name, text)) {
            Refuse(form, text);
        }
        return g_variant_new_boolean(text == "on");
    default:
        return NewNumber(form, text);
    }
}

} // namespace

char const* NameOf(Form form)
{
    return Describe(form).name;
}

char const* Accepted(Form form)
{
    return Describe(form).accepted;
}

char const* TypeOf(Form form)
{
    return Describe(form).type;
}

Owned<GVariant> Parse(Form form, std::string const& text)
{
    if (g_utf8_validate_len(text.data(), text.size(), nullptr) == FALSE) {
        throw std::invalid_argument(std::string("an argument is not UTF-8 text; use ") + Accepted(form));
    }
    Owned<GVariant> value(g_variant_ref_sink(NewValue(form, text)));
    Check(form, value.get());
    return value;
}

void Check(Form form, GVariant* value)
{
    Description const& description = Describe(form);
    if (std::strcmp(g_variant_get_type_string(value), description.type) != 0) {
        throw std::invalid_argument(std::string("a value of the type ") + g_variant_get_type_string(value) +
                                    " is not " + description.accepted + ", type " + description.type);
    }
    if (description.type[0] == 's') {
        std::string const text = g_variant_get_string(value, nullptr);
        if (text.empty() || (IsChoice(form) && !IsAmong(description.name, text))) {
            Refuse(form, text);
        }
    } else if (description.type[0] != 'b' && !IsInRange(description, ToNumber(value))) {
        Owned<char> const text(g_variant_print(value, FALSE));
        Refuse(form, text.get());
    }
}

} // namespace zviptv::verbs
