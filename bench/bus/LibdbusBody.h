// SPDX-License-Identifier: MIT
#pragma once

#include "Wire.h"

#include <dbus/dbus.h>

#include <cstring>
#include <initializer_list>
#include <memory>

namespace zviptv::bench {

struct LibdbusRelease
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
    void operator()(DBusConnection* connection) const { dbus_connection_unref(connection); }
};

/// Owns one reference of a message or a connection of libdbus.
template <typename T>
using LibdbusOwned = std::unique_ptr<T, LibdbusRelease>;

/// Owns an error of libdbus.
class LibdbusError
{
public:
    LibdbusError() { dbus_error_init(&m_error); }
    ~LibdbusError() { dbus_error_free(&m_error); }
    LibdbusError(LibdbusError const&) = delete;
    LibdbusError& operator=(LibdbusError const&) = delete;

    DBusError* Out() { return &m_error; }
    char const* Text() const { return m_error.message; }

private:
    DBusError m_error;
};

inline void AppendEntry(DBusMessageIter& entries, wire::Entry const& entry)
{
    DBusMessageIter pair;
    DBusMessageIter variant;
    DBusMessageIter bytes;
    dbus_message_iter_open_container(&entries, DBUS_TYPE_DICT_ENTRY, nullptr, &pair);
    dbus_message_iter_append_basic(&pair, DBUS_TYPE_STRING, &entry.key);
    dbus_message_iter_open_container(&pair, DBUS_TYPE_VARIANT, "ay", &variant);
    dbus_message_iter_open_container(&variant, DBUS_TYPE_ARRAY, "y", &bytes);
    char const* const data = entry.value.data();
    dbus_message_iter_append_fixed_array(&bytes, DBUS_TYPE_BYTE, &data, static_cast<int>(entry.value.size()));
    dbus_message_iter_close_container(&variant, &bytes);
    dbus_message_iter_close_container(&pair, &variant);
    dbus_message_iter_close_container(&entries, &pair);
}

/// The body of a message, "a{sv}" with a byte array in each variant.
inline void AppendEntries(DBusMessage* message, std::initializer_list<wire::Entry> entries)
{
    DBusMessageIter body;
    DBusMessageIter array;
    dbus_message_iter_init_append(message, &body);
    dbus_message_iter_open_container(&body, DBUS_TYPE_ARRAY, "{sv}", &array);
    for (wire::Entry const& entry : entries) {
        AppendEntry(array, entry);
    }
    dbus_message_iter_close_container(&body, &array);
}

/// Calls `visit` with the key and the bytes of each entry of such a body. Does nothing for any other body.
template <typename Visit>
void ForEachEntry(DBusMessage* message, Visit visit)
{
    DBusMessageIter body;
    if (std::strcmp(dbus_message_get_signature(message), "a{sv}") != 0 ||
        dbus_message_iter_init(message, &body) == FALSE) {
        return;
    }
    DBusMessageIter entries;
    dbus_message_iter_recurse(&body, &entries);
    for (; dbus_message_iter_get_arg_type(&entries) == DBUS_TYPE_DICT_ENTRY;
         dbus_message_iter_next(&entries)) {
        DBusMessageIter pair;
        DBusMessageIter variant;
        char const* key = nullptr;
        dbus_message_iter_recurse(&entries, &pair);
        dbus_message_iter_get_basic(&pair, &key);
        dbus_message_iter_next(&pair);
        dbus_message_iter_recurse(&pair, &variant);
        if (dbus_message_iter_get_arg_type(&variant) == DBUS_TYPE_ARRAY &&
            dbus_message_iter_get_element_type(&variant) == DBUS_TYPE_BYTE) {
            DBusMessageIter bytes;
            char const* data = nullptr;
            int size = 0;
            dbus_message_iter_recurse(&variant, &bytes);
            dbus_message_iter_get_fixed_array(&bytes, &data, &size);
            visit(key, std::string_view(data, static_cast<std::size_t>(size)));
        }
    }
}

} // namespace zviptv::bench
