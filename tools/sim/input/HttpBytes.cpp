// SPDX-License-Identifier: MIT
#include "input/HttpBytes.h"

#include "stream/PacketSource.h"

#include <algorithm>

namespace zviptv::sim {

namespace {

constexpr guint Timeout = 10; // seconds without a byte
constexpr gsize PieceSize = 64 * 1024;
constexpr std::chrono::seconds FirstRetry{1};
constexpr std::chrono::seconds LongestRetry{8};

/// Server errors may be temporary; errors about the request are not.
bool IsFinal(guint status)
{
    return status >= 400 && status < 500;
}

std::string TextOf(SoupMessage* message)
{
    char const* const phrase = soup_message_get_reason_phrase(message);
    return std::to_string(soup_message_get_status(message)) + " " + (phrase == nullptr ? "" : phrase);
}

} // namespace

HttpBytes::HttpBytes(std::string const& url)
    : m_url(url), m_self(std::make_shared<HttpBytes*>(this)), m_cancellable(g_cancellable_new()),
      m_session(soup_session_new_with_options("timeout", Timeout, "user-agent", "zviptv-sim", nullptr)),
      m_retryAfter(FirstRetry)
{
    // No compression, so that lengths are those of the stream.
    soup_session_remove_feature_by_type(m_session.get(), SOUP_TYPE_CONTENT_DECODER);
    RequireHost();
    Send();
}

HttpBytes::~HttpBytes()
{
    g_cancellable_cancel(m_cancellable.get());
}

/// For a callback that may run after this object was destroyed.
gpointer HttpBytes::NewToken() const
{
    return new std::weak_ptr<HttpBytes*>(m_self);
}

HttpBytes* HttpBytes::TakeToken(gpointer token)
{
    std::unique_ptr<std::weak_ptr<HttpBytes*>> const owned(static_cast<std::weak_ptr<HttpBytes*>*>(token));
    Self const self = owned->lock();
    return self ? *self : nullptr;
}

void HttpBytes::RequireHost() const
{
    struct Release
    {
        void operator()(GUri* uri) const { g_uri_unref(uri); }
    };
    std::unique_ptr<GUri, Release> const uri(
        g_uri_parse(m_url.c_str(), static_cast<GUriFlags>(SOUP_HTTP_URI_FLAGS), nullptr));
    char const* const host = uri ? g_uri_get_host(uri.get()) : nullptr;
    if (host == nullptr || *host == '\0') {
        throw StreamError("cannot open " + m_url +
                          ": it is not an address; write http://HOST/PATH or https://HOST/PATH");
    }
}

void HttpBytes::Send()
{
    m_received = 0;
    m_message.reset(soup_message_new(SOUP_METHOD_GET, m_url.c_str()));
    soup_session_send_async(m_session.get(), m_message.get(), G_PRIORITY_DEFAULT, m_cancellable.get(),
                            OnAnswer, NewToken());
}

void HttpBytes::OnAnswer(GObject* session, GAsyncResult* result, gpointer token)
{
    Error error;
    Owned<GInputStream> stream(soup_session_send_finish(SOUP_SESSION(session), result, error.Out()));
    HttpBytes* const self = TakeToken(token);
    if (self == nullptr) {
        return;
    }
    if (!stream) {
        self->Break(error.Message(), false);
    } else if (soup_message_get_status(self->m_message.get()) != SOUP_STATUS_OK) {
        self->Break("the server answered " + TextOf(self->m_message.get()),
                    IsFinal(soup_message_get_status(self->m_message.get())));
    } else {
        self->Begin(std::move(stream));
    }
}

void HttpBytes::Begin(Owned<GInputStream> stream)
{
    m_stream = std::move(stream);
    m_error.clear();
    m_wasOpen = true;
    if (m_whenOpen) {
        Opened({});
    } else {
        Wake();
    }
}

void HttpBytes::WhenOpen(std::function<void(std::string const& error)> done)
{
    m_whenOpen = std::move(done);
    if (m_wasOpen || m_hasEnded) {
        Opened(m_error);
    }
}

/// Does not use this object after the call, which may delete it.
void HttpBytes::Opened(std::string const& error)
{
    auto const done = std::exchange(m_whenOpen, {});
    if (done) {
        done(error.empty() ? std::string() : "cannot open " + m_url + ": " + error);
    }
}

void HttpBytes::AskForMore()
{
    m_isAsking = true;
    g_input_stream_read_bytes_async(m_stream.get(), PieceSize, G_PRIORITY_DEFAULT, m_cancellable.get(),
                                    OnBytes, NewToken());
}

void HttpBytes::OnBytes(GObject* stream, GAsyncResult* result, gpointer token)
{
    Error error;
    Owned<GBytes> const bytes(g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream), result, error.Out()));
    HttpBytes* const self = TakeToken(token);
    if (self == nullptr) {
        return;
    }
    self->m_isAsking = false;
    if (!bytes) {
        self->Break(error.Message(), false);
    } else {
        self->Add(bytes.get());
    }
}

void HttpBytes::Add(GBytes* bytes)
{
    gsize size = 0;
    auto const* const data = static_cast<std::uint8_t const*>(g_bytes_get_data(bytes, &size));
    if (size > 0) {
        m_queue.Add(ByteView(data, size));
        m_bytes += size;
        m_received += size;
        m_retryAfter = FirstRetry;
        Wake();
        return;
    }
    SoupMessageHeaders* const head = soup_message_get_response_headers(m_message.get());
    SoupEncoding const encoding = soup_message_headers_get_encoding(head);
    bool const isCut = encoding == SOUP_ENCODING_CONTENT_LENGTH &&
                       m_received < static_cast<std::uint64_t>(soup_message_headers_get_content_length(head));
    if (isCut || encoding == SOUP_ENCODING_EOF) { // the end of a body without a length is unknown
        Break("the server has closed the connection", false);
        return;
    }
    m_stream.reset();
    m_hasEnded = true;
    Wake();
}

/// Handles a failed connection. The first one must succeed at once.
void HttpBytes::Break(std::string const& reason, bool isFinal)
{
    m_stream.reset();
    m_error = reason;
    if (!m_wasOpen) {
        m_hasEnded = true;
        m_error += "; check the address, and whether the server runs";
        Opened(m_error);
        return;
    }
    if (isFinal) {
        m_hasEnded = true;
    } else {
        m_retry = LoopSource::Every(m_retryAfter, [this] {
            m_retry.Stop();
            Send();
        });
        m_retryAfter = std::min(2 * m_retryAfter, LongestRetry);
    }
    Wake();
}

std::size_t HttpBytes::Read(std::uint8_t* bytes, std::size_t size)
{
    std::size_t const taken = m_queue.Take(bytes, size);
    if (taken == 0 && m_stream && !m_isAsking) {
        AskForMore();
    }
    return taken;
}

void HttpBytes::AddTo(InputCounters& counters) const
{
    counters.bytes = m_bytes;
    counters.error = m_error;
    if (!m_error.empty()) {
        counters.state = m_hasEnded ? "failed" : "reconnecting";
    }
}

} // namespace zviptv::sim
