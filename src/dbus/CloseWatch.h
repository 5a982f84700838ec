// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <functional>

namespace zviptv {

/// Reports once that a connection has closed; ends with its owner.
/// GIO reports it through the main context in which the connection was made, which may be that of another
/// thread. The watch passes it on to the context of the thread that made the watch.
class CloseWatch
{
public:
    CloseWatch() = default;
    /// `closed` is called through the main context that is the calling thread's default. A call that is
    /// already queued when the watch ends is still made. `closed` is destroyed when no more calls can be
    /// made.
    CloseWatch(GDBusConnection* connection, std::function<void()> closed);
    CloseWatch(CloseWatch&& other) noexcept;
    CloseWatch& operator=(CloseWatch&& other) noexcept;
    ~CloseWatch();

private:
    static void OnClosed(GDBusConnection* connection, gboolean byPeer, GError* error, void* data);

    Owned<GDBusConnection> m_connection;
    gulong m_id = 0;
};

} // namespace zviptv
