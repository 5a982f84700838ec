// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

// Values of GLib, for the test kit.

namespace zviptv::simulated {

/// Releases a handle of GLib.
struct Release
{
    /// Drops a reference.
    void operator()(GVariant* value) const { g_variant_unref(value); }
    /// Drops a reference.
    void operator()(GDBusConnection* connection) const { g_object_unref(connection); }
    /// Frees an error.
    void operator()(GError* error) const { g_error_free(error); }
    /// Frees a text.
    void operator()(char* text) const { g_free(text); }
};

/// Owns a handle of GLib.
template <typename T>
using Handle = std::unique_ptr<T, Release>;

/// Floating references to values.
using Variants = std::initializer_list<GVariant*>;

/// A text as a value. @throws std::invalid_argument if it is not UTF-8
inline GVariant* NewVariant(std::string const& text)
{
    if (g_utf8_validate_len(text.data(), text.size(), nullptr) == FALSE) {
        throw std::invalid_argument("an argument is not UTF-8 text; pass valid UTF-8 without NUL bytes");
    }
    return g_variant_new_string(text.c_str());
}
inline GVariant* NewVariant(char const* text)
{
    return NewVariant(std::string(text));
}
inline GVariant* NewVariant(double value)
{
    return g_variant_new_double(value);
}
inline GVariant* NewVariant(std::int64_t value)
{
    return g_variant_new_int64(value);
}
inline GVariant* NewVariant(std::uint32_t value)
{
    return g_variant_new_uint32(value);
}
inline GVariant* NewVariant(bool value)
{
    return g_variant_new_boolean(value ? TRUE : FALSE);
}

/// Null for an option that is not given.
template <typename T>
GVariant* NewVariant(std::optional<T> const& value)
{
    return value ? NewVariant(*value) : nullptr;
}

/// An a{sv} of the options that are given.
inline GVariant* NewOptions(std::initializer_list<std::pair<char const*, GVariant*>> options)
{
    GVariantBuilder entries;
    g_variant_builder_init(&entries, G_VARIANT_TYPE_VARDICT);
    for (auto const& [name, value] : options) {
        if (value != nullptr) {
            g_variant_builder_add(&entries, "{sv}", name, value);
        }
    }
    return g_variant_builder_end(&entries);
}

/// A value in the words of a command line: `programme`, `--for 2`; empty if no option is given.
inline std::string InWords(GVariant* value)
{
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_STRING) != FALSE) {
        return std::string(" ") + g_variant_get_string(value, nullptr);
    }
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN) != FALSE) {
        return g_variant_get_boolean(value) != FALSE ? " on" : " off";
    }
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_DOUBLE) != FALSE) {
        char text[32];
        std::snprintf(text, sizeof text, " %g", g_variant_get_double(value));
        return text;
    }
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_VARDICT) == FALSE) {
        Handle<char> const text(g_variant_print(value, FALSE));
        return std::string(" ") + text.get();
    }
    std::string words;
    GVariantIter options;
    g_variant_iter_init(&options, value);
    char const* name = nullptr;
    for (GVariant* raw = nullptr; g_variant_iter_next(&options, "{&sv}", &name, &raw) != FALSE;) {
        Handle<GVariant> const option(raw);
        words += std::string(" --") + name + InWords(option.get());
    }
    return words;
}

/// A tuple of the values.
inline GVariant* NewTuple(Variants values)
{
    return g_variant_new_tuple(values.begin(), values.size());
}

} // namespace zviptv::simulated
