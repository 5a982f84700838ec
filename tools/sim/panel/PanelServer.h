// SPDX-License-Identifier: MIT
#pragma once

#include "Access.h"
#include "Strangers.h"
#include "glib/Owned.h"
#include "input/LoopSource.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace zviptv::sim {

/// The panel's HTTP server, on 127.0.0.1 only: sends the page's files, and accepts WebSockets and verbs.
/// For the thread whose default main context calls back.
class PanelServer
{
public:
    /// Sends the answer, a JSON text, unless the server no longer exists.
    using Answer = std::function<void(unsigned status, std::string const& json)>;
    /// Handles a POST to a path below the root; `body` has at most 64 KiB.
    using PostHandler = std::function<void(std::string const& body, Answer const& answer)>;
    using SocketHandler = std::function<void(SoupWebsocketConnection* connection)>;
    /// The text of a JSON file, empty if there is none; `rest` is the part of the path after the file's name.
    using FileHandler = std::function<std::optional<std::string>(std::string const& rest)>;

    /// @param port 0 for any free one @throws std::runtime_error with a line for the user
    explicit PanelServer(unsigned port);
    ~PanelServer();
    PanelServer(PanelServer const&) = delete;
    PanelServer& operator=(PanelServer const&) = delete;

    /// The largest number of open sockets of each kind. A further one is refused with the status 503.
    static constexpr std::size_t MaxSockets = 32;

    // `name` is the path after the token. A file whose name ends with a slash is a folder of files.
    void AddPost(std::string const& name, PostHandler handler);
    void AddSocket(std::string const& name, SocketHandler handler);
    void AddFile(std::string const& name, FileHandler handler);

    /// The address for the browser, with the token.
    std::string Address() const { return m_access.Address(); }

private:
    static void OnRequestHead(SoupServer* server, SoupServerMessage* message, char const* path,
                              GHashTable* query, gpointer self);
    static void OnPage(SoupServer* server, SoupServerMessage* message, char const* path, GHashTable* query,
                       gpointer self);
    void AddPath(std::string const& name);
    bool Has(std::string const& name) const;
    bool IsFull(std::string const& name) const;
    void Accept();

    Access m_access;
    Owned<GSocket> m_listener;
    LoopSource m_accepting;
    Strangers m_strangers;
    Owned<SoupServer> m_server;
    std::set<std::string> m_paths;                                 ///< paths of the handlers
    std::map<std::string, std::shared_ptr<std::size_t>> m_sockets; ///< number of open sockets by name
    std::shared_ptr<PanelServer*> m_self; ///< expires with this object; answers may last longer
};

} // namespace zviptv::sim
