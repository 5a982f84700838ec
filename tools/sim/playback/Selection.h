// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IPTVTypes.h>

#include <array>
#include <string>

namespace zviptv::sim {

class Player;
struct Programme;

/// What applications, or the control interface, have chosen.
struct Selection
{
    /// Instead of an application's bus name, where the control interface has muted.
    static constexpr char Control[] = "control";

    std::string audioMutedBy; ///< bus name of the application; empty while the sound is heard
    std::string videoMutedBy;
    int audio = 0;
    unsigned int teletext = 0;
    unsigned int subtitle = 0;
    std::array<unsigned int, 2> isdbText{}; ///< by EZVISDBTextType
    EZVMultiSoundMode dualSound = ZV_MULTI_SOUND_STEREO;
    std::string appId;

    /// The player is about to play `next`: what is chosen stays chosen where that has it, too, at whatever
    /// place; else the first is.
    void Follow(Player const& player, Programme const& next);
};

} // namespace zviptv::sim
