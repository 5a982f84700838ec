// SPDX-License-Identifier: MIT
#include "dbus/BusConnection.h"

#include "dbus/FreeDescriptors.h"
#include "glib/Deadline.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <utility>

namespace zviptv {

namespace {

constexpr auto MessageBus = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                              G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

using Clock = std::chrono::steady_clock;

/// The longest time for a bus that accepts a connection to answer.
constexpr std::chrono::milliseconds ConnectTimeout{2000};
/// The pause after an attempt that timed out: the steps of one Create, and all threads, share its outcome.
constexpr std::chrono::milliseconds ConnectPause{500};

/// The exit-on-close setting of the present connection. It outlives the connection, so that the next one
/// inherits it.
class ExitOnClose
{
public:
    void Follow(GDBusConnection* connection)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_isFollowing = true;
        g_object_weak_ref(G_OBJECT(connection), OnDisposed, this);
    }

    void Leave(GDBusConnection* connection)
    {
        g_object_weak_unref(G_OBJECT(connection), OnDisposed, this);
        Note(connection);
    }

    /// The setting of the last connection that was followed. Waits while another thread ends that connection.
    bool Last()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_noted.wait(lock, [this] { return !m_isFollowing; });
        return m_isOn;
    }

private:
    void Note(GDBusConnection* connection)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_isOn = g_dbus_connection_get_exit_on_close(connection) != FALSE;
        m_isFollowing = false;
        m_noted.notify_all();
    }

    static void OnDisposed(void* self, GObject* connection)
    {
        static_cast<ExitOnClose*>(self)->Note(G_DBUS_CONNECTION(connection));
    }

    std::mutex m_mutex;
    std::condition_variable m_noted;
    bool m_isFollowing = false;
    bool m_isOn = true; // GIO's default for shared connections
};

/// The connection that GIO shares within the process. It is new if nobody holds the previous one.
Owned<GDBusConnection> Shared(bool exitsOnClose, Error& error)
{
    Deadline const deadline(ConnectTimeout);
    Owned<GDBusConnection> connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, deadline.Get(), error.Out()));
    if (connection != nullptr && !exitsOnClose) {
        g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    }
    return connection;
}

/// A connection that replaces one whose bus has died; null while there is no bus.
Owned<GDBusConnection> Replacement(gboolean exitsOnClose, Error& error)
{
    Deadline const deadline(ConnectTimeout);
    Owned<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(
        SystemBusAddress().c_str(), MessageBus, nullptr, deadline.Get(), error.Out()));
    if (connection != nullptr) {
        g_dbus_connection_set_exit_on_close(connection.get(), exitsOnClose);
    }
    return connection;
}

void SetTimedOut(Error& error)
{
    error.Set(G_IO_ERROR_TIMED_OUT, g_dgettext("glib20", "Timeout was reached"));
}

} // namespace

bool IsAlive(Owned<GDBusConnection> const& connection)
{
    if (!IsOpen(connection)) {
        return false;
    }
    // GIO notices it on another thread, slightly later than the socket.
    GIOStream* const stream = g_dbus_connection_get_stream(connection.get());
    return G_IS_SOCKET_CONNECTION(stream) == FALSE ||
           g_socket_condition_check(g_socket_connection_get_socket(G_SOCKET_CONNECTION(stream)), G_IO_HUP) ==
               0;
}

std::string SystemBusAddress()
{
    Owned<char> const address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
    return address == nullptr ? std::string() : std::string(address.get());
}

Owned<GDBusConnection> SystemBus(Error& error)
{
    static std::mutex mutex;
    static GWeakRef last;                               // all zero, which is empty
    static ExitOnClose& exitOnClose = *new ExitOnClose; // the application may end a connection at exit
    static Clock::time_point timedOut;                  // time of the last attempt that timed out, if any
    std::lock_guard<std::mutex> const lock(mutex);
    Owned<GDBusConnection> current(static_cast<GDBusConnection*>(g_weak_ref_get(&last)));
    if (current != nullptr && IsAlive(current)) {
        return current;
    }
    Error unused; // while a dead connection is kept
    if (timedOut != Clock::time_point() && Clock::now() - timedOut < ConnectPause) {
        SetTimedOut(current == nullptr ? error : unused);
        return current;
    }
    if (!HaveFreeDescriptors(DescriptorsOfAConnection, current == nullptr ? error : unused)) {
        return current;
    }
    if (current == nullptr) {
        current = Shared(exitOnClose.Last(), error);
        if (current == nullptr) {
            if (error.Is(G_IO_ERROR_CANCELLED)) {
                timedOut = Clock::now();
                SetTimedOut(error);
            }
            return nullptr;
        }
        exitOnClose.Follow(current.get());
    }
    if (!IsAlive(current)) {
        if (Owned<GDBusConnection> next =
                Replacement(g_dbus_connection_get_exit_on_close(current.get()), unused)) {
            exitOnClose.Leave(current.get());
            current = std::move(next);
            exitOnClose.Follow(current.get());
        } else if (unused.Is(G_IO_ERROR_CANCELLED)) {
            timedOut = Clock::now();
        }
    }
    g_weak_ref_set(&last, current.get());
    return current;
}

bool IsPresent(Owned<GDBusConnection> const& connection)
{
    Error error;
    return connection == nullptr || connection == SystemBus(error);
}

} // namespace zviptv
