// SPDX-License-Identifier: MIT
#include "dbus/HelperMessage.h"

#include "dbus/WireSize.h"
#include "message/MessageAccess.h"

#include <algorithm>
#include <cstring>

namespace zviptv::helper {

namespace {

bool IsText(MessageEntry const& entry)
{
    return g_utf8_validate(entry.key.c_str(), -1, nullptr) != FALSE &&
           g_utf8_validate(entry.value.c_str(), -1, nullptr) != FALSE;
}

bool IsTooLarge(std::vector<MessageEntry> const& entries)
{
    WireSize size;
    size.Add(4, 4); // length of the array
    for (MessageEntry const& entry : entries) {
        size.Add(8, 0); // a pair begins
        size.AddString(entry.key.size());
        size.AddString(std::strlen(entry.value.c_str()));
    }
    return size.IsTooLarge();
}

} // namespace

GVariant* Encode(CMessageBuffer const& message, Error& error)
{
    auto const& entries = MessageAccess::Entries(message);
    if (!std::all_of(entries.begin(), entries.end(), IsText)) {
        error.Set(G_IO_ERROR_INVALID_DATA, "A key or a value of the message is not UTF-8 text");
        return nullptr;
    }
    if (IsTooLarge(entries)) {
        error.Set(G_IO_ERROR_MESSAGE_TOO_LARGE, TooLarge);
        return nullptr;
    }
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
    for (MessageEntry const& entry : entries) {
        g_variant_builder_add(&builder, "(ss)", entry.key.c_str(), entry.value.c_str());
    }
    return g_variant_new("(a(ss))", &builder);
}

CMessageBuffer Decode(GVariant* message)
{
    CMessageBuffer decoded;
    if (message == nullptr || g_variant_is_of_type(message, G_VARIANT_TYPE("(a(ss))")) == FALSE) {
        return decoded;
    }
    Owned<GVariant> const pairs(g_variant_get_child_value(message, 0));
    gsize const count = g_variant_n_children(pairs.get());
    for (gsize i = 0; i < count; ++i) {
        Owned<GVariant> const pair(g_variant_get_child_value(pairs.get(), i));
        Owned<GVariant> const key(g_variant_get_child_value(pair.get(), 0));
        Owned<GVariant> const value(g_variant_get_child_value(pair.get(), 1));
        decoded.AddValue(g_variant_get_string(key.get(), nullptr),
                         g_variant_get_string(value.get(), nullptr));
    }
    return decoded;
}

} // namespace zviptv::helper
