// SPDX-License-Identifier: MIT
#pragma once

#include "Feed.h"
#include "MediaStream.h"
#include "Pages.h"
#include "PanelServer.h"
#include "Traffic.h"
#include "glib/Owned.h"
#include "input/LoopSource.h"

#include <functional>
#include <memory>
#include <string>

namespace zviptv::sim {

/// How the panel reaches the television: as the control interface on the bus does.
struct PanelLink
{
    /// Calls a method with these arguments, a tuple. `done` is called once, with the empty text or with why
    /// the method failed.
    using Done = std::function<void(std::string const& error)>;
    std::function<void(std::string const& method, GVariant* parameters, Done const& done)> call;

    /// Calls `reply` with all properties as they are now, an a{sv}.
    std::function<void(std::function<void(GVariant* properties)> const& reply)> read;

    /// Has the "picture" or the "sound" of what is played written to a pipe, see link::Watch. `watched` gets
    /// the answer, an a{sv}, or null when there is no service.
    using Watched = std::function<void(GVariant* content)>;
    std::function<void(std::string const& what, FileHandle const& pipe, Watched const& watched)> watch;
};

/// A page in the browser that shows the television and controls it. Lives on the thread whose default main
/// context calls back.
class Panel
{
public:
    /// @param port 0 for any free one
    /// @param bus the address of the bus whose conversation is shown
    /// @throws std::runtime_error with a line for the user
    Panel(unsigned port, std::string const& bus, PanelLink link);
    ~Panel();
    Panel(Panel const&) = delete;
    Panel& operator=(Panel const&) = delete;

    /// For the browser, token included.
    std::string Address() const { return m_server.Address(); }

    /// Gets every signal of the control interface, and Captions of the service's link.
    void OnSignal(std::string const& interface, std::string const& name, GVariant* body);

private:
    void OnVerb(std::string const& body, PanelServer::Answer const& answer);
    void AddPage(SoupWebsocketConnection* connection);
    void Read();
    void Set(GVariant* properties);
    MediaStream MakeStream(MediaStream::Kind kind, char const* property);
    void NotePosition(Json::Value const& properties);
    void RefreshStill(Json::Value const& properties);

    PanelLink m_link;
    Feed m_feed;
    Pages m_pages{m_feed};
    Traffic m_traffic;
    PanelServer m_server;
    MediaStream m_picture;
    MediaStream m_sound;
    double m_position = 0;                  ///< seconds, as it was reported last
    Json::Value m_still{Json::objectValue}; ///< what decides which picture a paused television shows
    LoopSource m_reading;                   ///< while there is a page
    std::shared_ptr<Panel*> m_self;         ///< ends with this, unlike calls
};

} // namespace zviptv::sim
