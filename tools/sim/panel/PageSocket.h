// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <libsoup/soup.h>

#include <functional>
#include <string>

namespace zviptv::sim {

/// A WebSocket of a page, which answers every message once it has worked it off. So the sender knows how much
/// the page has to do, and can leave out what a slow page would not show.
/// Lives on the thread whose default main context calls back.
class PageSocket
{
public:
    using Callback = std::function<void(PageSocket&)>;

    /// `onAnswer` is called for each answer, `onClosed` once, as the last; it may destroy the socket.
    PageSocket(SoupWebsocketConnection* connection, Callback onAnswer, Callback onClosed);
    ~PageSocket();
    PageSocket(PageSocket const&) = delete;
    PageSocket& operator=(PageSocket const&) = delete;

    /// Messages that the page has not answered.
    unsigned Unanswered() const { return m_unanswered; }

    void Send(std::string const& text);
    void Send(GBytes* bytes);

private:
    static void OnMessage(SoupWebsocketConnection* connection, gint type, GBytes* message, gpointer self);
    static void OnClosed(SoupWebsocketConnection* connection, gpointer self);

    Owned<SoupWebsocketConnection> m_connection;
    Callback m_onAnswer;
    Callback m_onClosed;
    unsigned m_unanswered = 0;
};

} // namespace zviptv::sim
