// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"
#include "input/ArrivingBytes.h"
#include "input/ByteQueue.h"
#include "input/LoopSource.h"

#include <libsoup/soup.h>

namespace zviptv::sim {

/// The body of an HTTP response. A broken connection is opened again after 1 s, then 2, 4 and at most 8 s,
/// until the server refuses. Used on the thread whose default main context calls back.
class HttpBytes : public ArrivingBytes
{
public:
    /// Sends the request. @throws StreamError if the URL is malformed
    explicit HttpBytes(std::string const& url);
    ~HttpBytes() override;
    HttpBytes(HttpBytes const&) = delete;
    HttpBytes& operator=(HttpBytes const&) = delete;

    void WhenOpen(std::function<void(std::string const& error)> done) override;
    std::size_t Read(std::uint8_t* bytes, std::size_t size) override;
    bool HasEnded() const override { return m_hasEnded && m_queue.Size() == 0; }
    std::string const& Name() const override { return m_url; }
    void AddTo(InputCounters& counters) const override;

private:
    using Self = std::shared_ptr<HttpBytes*>;

    gpointer NewToken() const;
    static HttpBytes* TakeToken(gpointer token);
    static void OnAnswer(GObject* session, GAsyncResult* result, gpointer token);
    static void OnBytes(GObject* stream, GAsyncResult* result, gpointer token);

    void RequireHost() const;
    void Send();
    void Begin(Owned<GInputStream> stream);
    void AskForMore();
    void Add(GBytes* bytes);
    void Break(std::string const& reason, bool isFinal);
    void Opened(std::string const& error);

    std::string m_url;
    Self m_self;
    Owned<GCancellable> m_cancellable;
    Owned<SoupSession> m_session;
    Owned<SoupMessage> m_message;
    Owned<GInputStream> m_stream;
    ByteQueue m_queue;
    LoopSource m_retry;
    std::chrono::seconds m_retryAfter;
    std::function<void(std::string const&)> m_whenOpen;
    std::string m_error; ///< why there is no connection; empty while there is one
    bool m_wasOpen = false;
    bool m_isAsking = false;
    bool m_hasEnded = false;
    std::uint64_t m_bytes = 0;    ///< bytes of all connections
    std::uint64_t m_received = 0; ///< bytes of this connection
};

} // namespace zviptv::sim
