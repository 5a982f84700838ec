#pragma once

#include "BroadcastDataService.h"
#include "DataSubscriberService.h"
#include "Endpoint.h"
#include "ParentalLock.h"
#include "Player.h"
#include "PlayerControlService.h"
#include "Selection.h"

#include <string>

namespace zviptv::sim {

/// The service on the bus: owns the helper bus, answers on the endpoints, plays the stream. Lives on one
/// thread, whose main context has to be iterated.
class Service
{
public:
    /// @throws StreamError as Player does
    Service(PlayerOptions const& playback, PesFilter filter);
    ~Service();
    Service(Service const&) = delete;
    Service& operator=(Service const&) = delete;

    /// Whether the bus could be reached.
    bool IsOnBus() { return !m_playerControlEnd.GetPublicName().empty(); }

    Player& Playback() { return m_player; }

private:
    static std::string Announced(std::string busName, std::string type, std::string add, void* self);
    std::string Partner(std::string const& busName, std::string const& type, bool comesUp);

    Selection m_selection;
    DataSubscriberService m_subscribers;
    Player m_player;
    ParentalLock m_lock{std::nullopt, false};
    PlayerControlService m_playerControl;
    BroadcastDataService m_broadcastData;
    Endpoint m_playerControlEnd;
    Endpoint m_broadcastDataEnd;
    Endpoint m_subscriberEnd;
};

} // namespace zviptv::sim
