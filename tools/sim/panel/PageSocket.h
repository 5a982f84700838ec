// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <libsoup/soup.h>

#include <functional>
#include <string>

namespace zviptv::sim {

/// A WebSocket of a page. The page answers every message after it has processed it, so that the sender knows
/// how many messages are waiting and can skip some for a slow page.
/// For the thread whose default main context calls back.
class PageSocket
{
public:
    using Callback = std::function<void(PageSocket&)>;

    /// `onAnswer` is called for each answer, `onClosed` once, at the end; it may destroy the socket.
    PageSocket(SoupWebsocketConnection* connection, Callback onAnswer, Callback onClosed);
    ~PageSocket();
    PageSocket(PageSocket const&) = delete;
    PageSocket& operator=(PageSocket const&) = delete;

    /// The number of messages that the page has not answered.
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
