// SPDX-License-Identifier: MIT
#include "PageSocket.h"

#include <utility>

namespace zviptv::sim {

namespace {

constexpr guint64 LongestAnswer = 1024;
constexpr guint KeepAlive = 10; // seconds; detects a browser that hangs or sleeps

} // namespace

PageSocket::PageSocket(SoupWebsocketConnection* connection, Callback onAnswer, Callback onClosed)
    : m_connection(Share(connection)), m_onAnswer(std::move(onAnswer)), m_onClosed(std::move(onClosed))
{
    soup_websocket_connection_set_max_incoming_payload_size(connection, LongestAnswer);
    soup_websocket_connection_set_keepalive_interval(connection, KeepAlive);
    g_signal_connect(connection, "message", G_CALLBACK(OnMessage), this);
    g_signal_connect(connection, "closed", G_CALLBACK(OnClosed), this);
}

PageSocket::~PageSocket()
{
    g_signal_handlers_disconnect_by_data(m_connection.get(), this);
    if (soup_websocket_connection_get_state(m_connection.get()) == SOUP_WEBSOCKET_STATE_OPEN) {
        soup_websocket_connection_close(m_connection.get(), SOUP_WEBSOCKET_CLOSE_GOING_AWAY, nullptr);
    }
}

void PageSocket::Send(std::string const& text)
{
    Owned<GBytes> const bytes(g_bytes_new(text.data(), text.size()));
    if (soup_websocket_connection_get_state(m_connection.get()) == SOUP_WEBSOCKET_STATE_OPEN) {
        soup_websocket_connection_send_message(m_connection.get(), SOUP_WEBSOCKET_DATA_TEXT, bytes.get());
        ++m_unanswered;
    }
}

void PageSocket::Send(GBytes* bytes)
{
    if (soup_websocket_connection_get_state(m_connection.get()) == SOUP_WEBSOCKET_STATE_OPEN) {
        soup_websocket_connection_send_message(m_connection.get(), SOUP_WEBSOCKET_DATA_BINARY, bytes);
        ++m_unanswered;
    }
}

void PageSocket::OnMessage(SoupWebsocketConnection* /*connection*/, gint /*type*/, GBytes* /*message*/,
                           gpointer self)
{
    auto& socket = *static_cast<PageSocket*>(self);
    if (socket.m_unanswered > 0) {
        --socket.m_unanswered;
        socket.m_onAnswer(socket);
    }
}

void PageSocket::OnClosed(SoupWebsocketConnection* /*connection*/, gpointer self)
{
    auto& socket = *static_cast<PageSocket*>(self);
    auto const onClosed = socket.m_onClosed;
    onClosed(socket);
}

} // namespace zviptv::sim
