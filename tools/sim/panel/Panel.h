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

/// The panel's access to the television, like that of the control interface on the bus.
struct PanelLink
{
    /// Calls a method with these arguments, a tuple. `done` is called once, with the reason if the method
    /// failed, otherwise with an empty text.
    using Done = std::function<void(std::string const& error)>;
    std::function<void(std::string const& method, GVariant* parameters, Done const& done)> call;

    /// Calls `reply` with the current values of all properties, an a{sv}.
    std::function<void(std::function<void(GVariant* properties)> const& reply)> read;

    /// Makes the service write the "picture" or the "sound" that is played to a pipe, see link::Watch.
    /// `watched` gets the answer, an a{sv}, or null without a service.
    using Watched = std::function<void(GVariant* content)>;
    std::function<void(std::string const& what, FileHandle const& pipe, Watched const& watched)> watch;
};

/// A page in the browser that shows the television and controls it. For the thread whose default main
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

    /// The address for the browser, with the token.
    std::string Address() const { return m_server.Address(); }

    /// Passes a signal to the pages: one of the control interface, or Captions of the service's link.
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
    double m_position = 0;                  ///< last reported position, in seconds
    Json::Value m_still{Json::objectValue}; ///< values on which the picture of a paused television depends
    LoopSource m_reading;                   ///< runs while there is a page
    std::shared_ptr<Panel*> m_self;         ///< expires with this object; calls may last longer
};

} // namespace zviptv::sim
