// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Context.h"
#include "glib/Owned.h"

#include <functional>

namespace zviptv::client {

/// Reports once that a connection has closed, after what it has received. Ends with its owner, also inside
/// the report.
///
/// The report runs through the main context that is the default of the thread that made the source. GIO's
/// signal "closed" would run through that of the thread that connected, which may not be iterated by anyone.
class CloseSource
{
public:
    CloseSource(GDBusConnection* connection, std::function<void()> closed);
    ~CloseSource();
    CloseSource(CloseSource const&) = delete;
    CloseSource& operator=(CloseSource const&) = delete;

private:
    static gboolean OnClosed(void* self);

    Owned<GDBusConnection> const m_connection;
    std::function<void()> const m_closed;
    Owned<GSource> const m_source;
    Timer m_report;
};

} // namespace zviptv::client
