// SPDX-License-Identifier: MIT
#pragma once

#include "Fuzz.h"
#include "glib/Owned.h"

#include <array>

namespace zviptv::fuzz {

/// Takes a floating reference.
inline Owned<GVariant> SinkFloating(GVariant* variant)
{
    return Owned<GVariant>(g_variant_ref_sink(variant));
}

inline std::string ConsumeUtf8(FuzzedDataProvider& input)
{
    std::string const raw = input.ConsumeRandomLengthString(40);
    Owned<char> const text(g_utf8_make_valid(raw.c_str(), -1));
    return text.get();
}

inline GVariant* NewBytes(std::string const& bytes)
{
    return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
}

/// The value of a key: usually bytes, otherwise any type.
inline GVariant* NewValue(FuzzedDataProvider& input)
{
    switch (input.ConsumeIntegralInRange(0, 11)) {
    case 0:
        return g_variant_new_string(ConsumeUtf8(input).c_str());
    case 1:
        return g_variant_new_int32(input.ConsumeIntegral<gint32>());
    case 2:
        return g_variant_new_bytestring(ConsumeUtf8(input).c_str());
    case 3:
        return g_variant_new_variant(NewBytes(input.ConsumeRandomLengthString(40)));
    case 4:
        return g_variant_new_parsed("[<@ay []>, <'x'>, <(1, true)>]");
    case 5:
        return g_variant_new_fixed_array(G_VARIANT_TYPE_UINT32, nullptr, 0, sizeof(guint32));
    case 6:
        return g_variant_new_parsed("{'a': <@ay [1]>}");
    default:
        return NewBytes(input.ConsumeRandomLengthString(400));
    }
}

/// An "a{sv}" with values of any type.
inline GVariant* NewDictionary(FuzzedDataProvider& input)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_VARDICT);
    for (int i = input.ConsumeIntegralInRange(0, 12); i > 0; --i) {
        std::string const key = ConsumeUtf8(input);
        g_variant_builder_add(&builder, "{sv}", key.c_str(), NewValue(input));
    }
    return g_variant_builder_end(&builder);
}

/// A body whose type is one of many; its content is taken from the input as it lies in memory.
inline Owned<GVariant> ConsumeUntrusted(FuzzedDataProvider& input)
{
    static constexpr std::array<char const*, 16> types{
        "(a{sv})",  "(a(ss))", "(a{sv})", "(a(ss))", "(a{ss})", "a{sv}", "a(ss)",    "()",
        "(a{sv}s)", "(s)",     "(v)",     "v",       "(a(sv))", "(ay)",  "(a(sss))", "(a{say})"};
    char const* const type = input.PickValueInArray(types);
    bool const normalise = input.ConsumeBool();
    std::vector<std::uint8_t> const bytes = Rest(input);
    Owned<GBytes> const held(g_bytes_new(bytes.data(), bytes.size()));
    Owned<GVariant> const raw =
        SinkFloating(g_variant_new_from_bytes(G_VARIANT_TYPE(type), held.get(), FALSE));
    return Owned<GVariant>(normalise ? g_variant_get_normal_form(raw.get()) : g_variant_ref(raw.get()));
}

} // namespace zviptv::fuzz
