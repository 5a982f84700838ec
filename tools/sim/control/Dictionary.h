// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"
#include "glib/Utf8.h"

#include <optional>
#include <string>

namespace zviptv::sim {

/// Builds an a{sv}.
class Dictionary
{
public:
    Dictionary() { g_variant_builder_init(&m_builder, G_VARIANT_TYPE_VARDICT); }
    ~Dictionary() { g_variant_builder_clear(&m_builder); }
    Dictionary(Dictionary const&) = delete;
    Dictionary& operator=(Dictionary const&) = delete;

    /// Takes over a floating value, or adds a reference to one that has an owner.
    Dictionary& Add(char const* key, GVariant* value)
    {
        g_variant_builder_add(&m_builder, "{sv}", key, value);
        return *this;
    }

    /// Bytes of the text that are not UTF-8 are replaced by U+FFFD.
    Dictionary& Add(char const* key, std::string const& text)
    {
        return Add(key, g_variant_new_string(ValidUtf8(text).c_str()));
    }

    /// The dictionary, as a floating reference.
    GVariant* End() { return g_variant_builder_end(&m_builder); }
    Owned<GVariant> Take() { return Owned<GVariant>(g_variant_ref_sink(End())); }

private:
    GVariantBuilder m_builder;
};

/// The entry of an a{sv}, if it exists and has this type.
inline Owned<GVariant> Entry(GVariant* dictionary, char const* key, char const* type)
{
    return Owned<GVariant>(g_variant_lookup_value(dictionary, key, G_VARIANT_TYPE(type)));
}

} // namespace zviptv::sim
