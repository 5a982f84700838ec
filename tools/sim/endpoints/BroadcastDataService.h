// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"
#include "playback/ParentalLock.h"
#include "playback/Player.h"
#include "playback/Selection.h"

namespace zviptv::sim {

/// Answers the requests of broadcast data objects from the data of the programme.
class BroadcastDataService
{
public:
    BroadcastDataService(Player const& player, Selection const& selection, ParentalLock& lock)
        : m_player(player), m_selection(selection), m_lock(lock)
    {
    }

    /// Returns nullopt if the function is not one of broadcast data.
    std::optional<CMessageBuffer> Answer(Request const& request);

private:
    Player const& m_player;
    Selection const& m_selection;
    ParentalLock& m_lock;
};

} // namespace zviptv::sim
