// SPDX-License-Identifier: MIT
#include "dbus/PeerMessage.h"

#include "dbus/WireSize.h"
#include "message/MessageAccess.h"

#include <array>
#include <string>

namespace zviptv {

namespace {

bool IsTooLarge(CMessageBuffer const& message)
{
    WireSize size;
    size.Add(4, 4); // length of the array
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        size.Add(8, 0); // a dictionary entry begins
        size.AddString(entry.key.size());
        size.Add(1, 4); // signature "ay": length, text, zero
        size.Add(4, 4 + entry.value.size());
    }
    return size.IsTooLarge();
}

Owned<GVariant> EmptyArray(char const* elementType)
{
    return Owned<GVariant>(g_variant_ref_sink(g_variant_new_array(G_VARIANT_TYPE(elementType), nullptr, 0)));
}

/// GLib builds the description of a container type again whenever no value of that type exists. To avoid this
/// for every message, this keeps one value of each type that occurs in the entries of a body and the fields
/// of a header. The values are never released: a child that was forked while another thread held GLib's lock
/// would wait for it in exit(). The pointer is kept, although nothing reads it, so that leak checkers find
/// the values.
void KeepTypeDescriptions()
{
    [[gnu::used]] static auto const* const values =
        new std::array<Owned<GVariant>, 3>{EmptyArray("{sv}"), EmptyArray("y"), EmptyArray("{yv}")};
}

GVariant* NewEntry(MessageEntry const& entry)
{
    GVariant* const bytes = g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, entry.value.data(),
                                                      entry.value.size(), sizeof(guchar));
    return g_variant_new_dict_entry(g_variant_new_string(entry.key.c_str()), g_variant_new_variant(bytes));
}

} // namespace

Owned<GVariant> EncodePeerMessage(CMessageBuffer const& message, Error& error)
{
    if (IsTooLarge(message)) {
        error.Set(G_IO_ERROR_MESSAGE_TOO_LARGE, TooLarge);
        return nullptr;
    }
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        if (g_utf8_validate(entry.key.data(), static_cast<gssize>(entry.key.size()), nullptr) == FALSE) {
            error.Set(G_IO_ERROR_INVALID_DATA, "A key of the message is not UTF-8 text");
            return nullptr;
        }
    }
    KeepTypeDescriptions();
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    for (MessageEntry const& entry : MessageAccess::Entries(message)) {
        g_variant_builder_add_value(&builder, NewEntry(entry));
    }
    GVariant* entries = g_variant_builder_end(&builder);
    return Owned<GVariant>(g_variant_ref_sink(g_variant_new_tuple(&entries, 1)));
}

bool DecodePeerMessage(GVariant* body, CMessageBuffer& message, Error& error)
{
    if (g_variant_is_of_type(body, G_VARIANT_TYPE("(a{sv})")) == FALSE) {
        std::string const complaint = std::string("The message has the type ") +
                                      g_variant_get_type_string(body) + " instead of (a{sv})";
        error.Set(G_IO_ERROR_INVALID_DATA, complaint.c_str());
        return false;
    }
    Owned<GVariant> const entries(g_variant_get_child_value(body, 0));
    gsize const count = g_variant_n_children(entries.get());
    for (gsize i = 0; i < count; ++i) {
        Owned<GVariant> const entry(g_variant_get_child_value(entries.get(), i));
        Owned<GVariant> const key(g_variant_get_child_value(entry.get(), 0));
        Owned<GVariant> const boxed(g_variant_get_child_value(entry.get(), 1));
        Owned<GVariant> const value(g_variant_get_variant(boxed.get()));
        if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BYTESTRING) == FALSE) {
            continue;
        }
        gsize size = 0;
        gconstpointer const bytes = g_variant_get_fixed_array(value.get(), &size, sizeof(guchar));
        if (size > 0) {
            message.AddValue(g_variant_get_string(key.get(), nullptr), static_cast<int>(size),
                             static_cast<char const*>(bytes));
        }
    }
    return true;
}

} // namespace zviptv
