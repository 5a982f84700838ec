// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

#include <memory>
#include <utility>

// Owners of GLib's handles, for the library, the tools and the tests. They use no other header of the
// library.

namespace zviptv {

/// How each kind of handle is released.
struct GLibRelease
{
    void operator()(GDateTime* time) const { g_date_time_unref(time); }
    void operator()(GBytes* bytes) const { g_bytes_unref(bytes); }
    void operator()(GDBusNodeInfo* info) const { g_dbus_node_info_unref(info); }
    void operator()(GMainContext* context) const { g_main_context_unref(context); }
    void operator()(GMainLoop* loop) const { g_main_loop_unref(loop); }
    void operator()(GSource* source) const { g_source_unref(source); }
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
    void operator()(char* text) const { g_free(text); }
    void operator()(unsigned char* bytes) const { g_free(bytes); }
    void operator()(GError* error) const = delete; // see Error
    template <typename T>
    void operator()(T* object) const
    {
        g_object_unref(object);
    }
};

/// Owns a reference to an object or another handle of GLib, or a text that GLib has allocated.
template <typename T>
using Owned = std::unique_ptr<T, GLibRelease>;

/// Adds a reference to `object`, which may be null.
template <typename T>
Owned<T> Share(T* object)
{
    return Owned<T>(object == nullptr ? nullptr : static_cast<T*>(g_object_ref(object)));
}

/// Receives and owns a GError.
class Error
{
public:
    Error() = default;
    ~Error() { g_clear_error(&m_error); }
    Error(Error const&) = delete;
    Error& operator=(Error const&) = delete;

    /// The argument for the error parameter of a GLib call.
    GError** Out()
    {
        g_clear_error(&m_error);
        return &m_error;
    }

    void Set(GIOErrorEnum code, char const* message)
    {
        *Out() = g_error_new_literal(G_IO_ERROR, code, message);
    }

    /// Removes the D-Bus name of a remote error from the message.
    void StripName() { g_dbus_error_strip_remote_error(m_error); }

    explicit operator bool() const { return m_error != nullptr; }
    GError const* Get() const { return m_error; }
    int Code() const { return m_error->code; }
    char const* Message() const { return m_error->message; }
    bool Is(GIOErrorEnum code) const { return g_error_matches(m_error, G_IO_ERROR, code) != FALSE; }

private:
    GError* m_error = nullptr;
};

/// A name watch; ends with its owner.
class NameWatch
{
public:
    NameWatch() = default;
    explicit NameWatch(guint id) : m_id(id) {}
    NameWatch(NameWatch&& other) noexcept : m_id(std::exchange(other.m_id, 0)) {}
    NameWatch& operator=(NameWatch&& other) noexcept
    {
        std::swap(m_id, other.m_id);
        return *this;
    }
    ~NameWatch()
    {
        if (m_id != 0) {
            g_bus_unwatch_name(m_id);
        }
    }

    guint Id() const { return m_id; }

private:
    guint m_id = 0;
};

} // namespace zviptv
