// SPDX-License-Identifier: MIT
#include "PanelServer.h"

#include "PageFiles.h"

#include <stdexcept>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr goffset LargestBody = 64 * 1024;
constexpr gushort TryAgainLater = 1013; // RFC 6455, IANA registry of close codes
constexpr char NoSuchFile[] = "the panel has no such file\n";
constexpr char TooManyPages[] = "too many pages are open: the panel serves 32; close one of them\n";
static_assert(PanelServer::MaxSockets == 32, "TooManyPages names it");

void Respond(SoupServerMessage* message, unsigned status, char const* type, char const* bytes, gsize size)
{
    soup_server_message_set_status(message, status, nullptr);
    soup_server_message_set_response(message, type, SOUP_MEMORY_COPY, bytes, size);
}

void RespondText(SoupServerMessage* message, unsigned status, std::string const& text,
                 char const* type = "text/plain; charset=utf-8")
{
    Respond(message, status, type, text.data(), text.size());
}

/// Forbids caches, frames, resources from other origins, and referrers. libsoup does not notice that a
/// browser closes a connection between two requests. Therefore the server closes it after the answer.
void AddHeads(SoupServerMessage* message)
{
    SoupMessageHeaders* const heads = soup_server_message_get_response_headers(message);
    for (auto const& [name, value] : std::initializer_list<std::pair<char const*, char const*>>{
             {"Cache-Control", "no-store"},
             {"Connection", "close"},
             {"Referrer-Policy", "no-referrer"},
             {"X-Content-Type-Options", "nosniff"},
             {"Content-Security-Policy",
              "default-src 'self'; img-src 'self' blob:; connect-src 'self' ws:; frame-ancestors 'none'; "
              "base-uri 'none'; form-action 'none'"}}) {
        soup_message_headers_replace(heads, name, value);
    }
}

/// Refuses a request with another method.
bool Refuses(SoupServerMessage* message, std::string const& method)
{
    if (soup_server_message_get_method(message) == method) {
        return false;
    }
    RespondText(message, SOUP_STATUS_METHOD_NOT_ALLOWED, "use " + method + "\n");
    return true;
}

/// Whether the body has a known and moderate length.
bool HasModerateBody(SoupServerMessage* message)
{
    SoupMessageHeaders* const heads = soup_server_message_get_request_headers(message);
    SoupEncoding const encoding = soup_message_headers_get_encoding(heads);
    return encoding == SOUP_ENCODING_NONE || (encoding == SOUP_ENCODING_CONTENT_LENGTH &&
                                              soup_message_headers_get_content_length(heads) <= LargestBody);
}

unsigned PortOf(GSocket* socket)
{
    Owned<GSocketAddress> const address(g_socket_get_local_address(socket, nullptr));
    return g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address.get()));
}

/// Opens a socket on 127.0.0.1. @throws std::runtime_error with a line for the user
Owned<GSocket> Listen(unsigned port)
{
    Error error;
    Owned<GInetAddress> const loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
    Owned<GSocketAddress> const address(
        g_inet_socket_address_new(loopback.get(), static_cast<guint16>(port)));
    Owned<GSocket> socket(
        g_socket_new(G_SOCKET_FAMILY_IPV4, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, error.Out()));
    if (!socket || g_socket_bind(socket.get(), address.get(), TRUE, error.Out()) == FALSE ||
        g_socket_listen(socket.get(), error.Out()) == FALSE) {
        throw std::runtime_error("the panel cannot listen on port " + std::to_string(port) + ": " +
                                 error.Message() + "; use another port, or --panel without one");
    }
    g_socket_set_blocking(socket.get(), FALSE);
    return socket;
}

template <typename Handler>
gpointer NewHandler(Handler handler)
{
    return std::make_unique<Handler>(std::move(handler)).release();
}

template <typename Handler>
void FreeHandler(gpointer handler)
{
    std::unique_ptr<Handler> const owned(static_cast<Handler*>(handler));
}

} // namespace

PanelServer::PanelServer(unsigned port)
    : m_listener(Listen(port)), m_server(soup_server_new("server-header", "zviptv-sim", nullptr)),
      m_self(std::make_shared<PanelServer*>(this))
{
    m_access.SetPort(PortOf(m_listener.get()));
    soup_server_add_early_handler(m_server.get(), nullptr, OnRequestHead, this, nullptr);
    soup_server_add_handler(m_server.get(), nullptr, OnPage, this, nullptr);
    Accept();
}

PanelServer::~PanelServer()
{
    soup_server_disconnect(m_server.get());
}

/// libsoup's listener stops if a connection cannot be accepted. This one tries again.
void PanelServer::Accept()
{
    m_accepting = LoopSource::OnInput(g_socket_get_fd(m_listener.get()), [this] {
        Error error;
        Owned<GSocket> socket(g_socket_accept(m_listener.get(), nullptr, error.Out()));
        if (!socket) { // for example, there is no free descriptor
            constexpr std::chrono::seconds pause{1};
            m_accepting = LoopSource::Every(pause, [this] { Accept(); });
            return;
        }
        Owned<GSocketConnection> const stream(g_socket_connection_factory_create_connection(socket.get()));
        Owned<GSocketAddress> const local(g_socket_get_local_address(socket.get(), nullptr));
        Owned<GSocketAddress> remote(g_socket_get_remote_address(socket.get(), nullptr));
        soup_server_accept_iostream(m_server.get(), G_IO_STREAM(stream.get()), local.get(), remote.get(),
                                    nullptr);
        m_strangers.Add(std::move(socket), std::move(remote));
    });
}

/// Runs before the body is read. A request that has a status is not processed further.
void PanelServer::OnRequestHead(SoupServer* /*server*/, SoupServerMessage* message, char const* path,
                                GHashTable* /*query*/, gpointer self)
{
    auto& server = *static_cast<PanelServer*>(self);
    std::string const name = std::string(path).erase(0, server.m_access.Root().size());
    bool const isAllowed = server.m_access.Allows(path, soup_server_message_get_request_headers(message));
    AddHeads(message);
    if (isAllowed) {
        server.m_strangers.Remove(soup_server_message_get_remote_address(message));
    }
    if (!isAllowed) {
        RespondText(message, SOUP_STATUS_FORBIDDEN,
                    "the address lacks the panel's token, or the request comes from another page; open the "
                    "address that zviptv-sim has printed\n");
    } else if (!HasModerateBody(message)) {
        RespondText(message, SOUP_STATUS_REQUEST_ENTITY_TOO_LARGE,
                    "the request is too long: send at most 64 KiB, with a Content-Length\n");
    } else if (!server.Has(name)) {
        RespondText(message, SOUP_STATUS_NOT_FOUND, NoSuchFile);
    } else if (server.IsFull(name)) {
        RespondText(message, SOUP_STATUS_SERVICE_UNAVAILABLE, TooManyPages);
    }
    if (soup_server_message_get_status(message) != 0) {
        soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
    }
}

/// libsoup calls the early handler of the most specific path only.
void PanelServer::AddPath(std::string const& name)
{
    m_paths.insert(name);
    soup_server_add_early_handler(m_server.get(), (m_access.Root() + name).c_str(), OnRequestHead, this,
                                  nullptr);
}

/// libsoup also calls a handler for paths that only begin with its path.
bool PanelServer::Has(std::string const& name) const
{
    std::string const folder = name.substr(0, name.rfind('/') + 1);
    return folder.empty() || m_paths.count(name) != 0 || (folder != name && m_paths.count(folder) != 0);
}

bool PanelServer::IsFull(std::string const& name) const
{
    auto const sockets = m_sockets.find(name);
    return sockets != m_sockets.end() && *sockets->second >= MaxSockets;
}

void PanelServer::OnPage(SoupServer* /*server*/, SoupServerMessage* message, char const* path,
                         GHashTable* /*query*/, gpointer self)
{
    auto const& server = *static_cast<PanelServer*>(self);
    if (Refuses(message, SOUP_METHOD_GET)) {
        return;
    }
    std::string const name = path + server.m_access.Root().size();
    PageFile const file = FindPageFile(name.empty() ? "index.html" : name);
    if (file.bytes == nullptr) {
        RespondText(message, SOUP_STATUS_NOT_FOUND, NoSuchFile);
        return;
    }
    gsize size = 0;
    auto const* const bytes = static_cast<char const*>(g_bytes_get_data(file.bytes.get(), &size));
    Respond(message, SOUP_STATUS_OK, file.type, bytes, size);
}

void PanelServer::AddFile(std::string const& name, FileHandler handler)
{
    using Handler = std::pair<FileHandler, std::size_t>;
    std::string const path = m_access.Root() + name;
    auto const onRequest = [](SoupServer*, SoupServerMessage* message, char const* asked, GHashTable*,
                              gpointer data) {
        if (Refuses(message, SOUP_METHOD_GET)) {
            return;
        }
        auto const& [onFile, size] = *static_cast<Handler*>(data);
        if (std::optional<std::string> const text = onFile(asked + size)) {
            RespondText(message, SOUP_STATUS_OK, *text, "application/json");
        } else {
            RespondText(message, SOUP_STATUS_NOT_FOUND, "there is no such message any more\n");
        }
    };
    soup_server_add_handler(m_server.get(), path.c_str(), onRequest,
                            NewHandler(Handler(std::move(handler), path.size())), FreeHandler<Handler>);
    AddPath(name);
}

void PanelServer::AddPost(std::string const& name, PostHandler handler)
{
    using Handler = std::pair<PostHandler, std::weak_ptr<PanelServer*>>;
    auto const onRequest = [](SoupServer*, SoupServerMessage* raw, char const*, GHashTable*, gpointer data) {
        if (Refuses(raw, SOUP_METHOD_POST)) {
            return;
        }
        auto const& [onPost, server] = *static_cast<Handler*>(data);
        Owned<GBytes> const body(soup_message_body_flatten(soup_server_message_get_request_body(raw)));
        gsize size = 0;
        auto const* const bytes = static_cast<char const*>(g_bytes_get_data(body.get(), &size));
        soup_server_message_pause(raw);
        std::shared_ptr<SoupServerMessage> const message(Share(raw).release(), g_object_unref);
        onPost(std::string(bytes, size),
               [message, server = server](unsigned status, std::string const& json) {
                   if (!server.expired()) {
                       RespondText(message.get(), status, json, "application/json");
                       soup_server_message_unpause(message.get());
                   }
               });
    };
    std::string const path = m_access.Root() + name;
    soup_server_add_handler(m_server.get(), path.c_str(), onRequest,
                            NewHandler(Handler(std::move(handler), m_self)), FreeHandler<Handler>);
    AddPath(name);
}

void PanelServer::AddSocket(std::string const& name, SocketHandler handler)
{
    using Count = std::shared_ptr<std::size_t>;
    using Handler = std::pair<SocketHandler, Count>;
    auto const onConnection = [](SoupServer*, SoupServerMessage*, char const*,
                                 SoupWebsocketConnection* connection, gpointer data) {
        auto const& [onSocket, count] = *static_cast<Handler*>(data);
        if (*count >= MaxSockets) { // several were requested at the same time
            soup_websocket_connection_close(connection, TryAgainLater, TooManyPages);
            return;
        }
        ++*count;
        auto const onEnd = [](gpointer ended, GObject*) {
            std::unique_ptr<Count> const owned(static_cast<Count*>(ended));
            --**owned;
        };
        g_object_weak_ref(G_OBJECT(connection), onEnd, std::make_unique<Count>(count).release());
        onSocket(connection);
    };
    Count const count = m_sockets.emplace(name, std::make_shared<std::size_t>(0)).first->second;
    soup_server_add_websocket_handler(m_server.get(), (m_access.Root() + name).c_str(), nullptr, nullptr,
                                      onConnection, NewHandler(Handler(std::move(handler), count)),
                                      FreeHandler<Handler>);
    AddPath(name);
}

} // namespace zviptv::sim
