// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"
#include "playback/Player.h"
#include "playback/Selection.h"

namespace zviptv::sim {

/// Answers the requests of player control objects.
class PlayerControlService
{
public:
    PlayerControlService(Player const& player, Selection& selection)
        : m_player(player), m_selection(selection)
    {
    }

    /// Returns nullopt if the function is not one of player control.
    std::optional<CMessageBuffer> Answer(Request const& request);

private:
    Player const& m_player;
    Selection& m_selection;
};

} // namespace zviptv::sim
