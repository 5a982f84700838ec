// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IPTVTypes.h>

#include <array>
#include <string>

namespace zviptv::sim {

class Player;
struct Programme;

/// The selections of applications and of the control interface.
struct Selection
{
    /// Replaces an application's bus name if the control interface has muted.
    static constexpr char Control[] = "control";

    std::string audioMutedBy; ///< bus name of the application; empty while the sound is heard
    std::string videoMutedBy;
    int audio = 0;
    unsigned int teletext = 0;
    unsigned int subtitle = 0;
    std::array<unsigned int, 2> isdbText{}; ///< by EZVISDBTextType
    EZVMultiSoundMode dualSound = ZV_MULTI_SOUND_STEREO;
    std::string appId;

    /// Call it before the player plays `next`: a selection is kept if `next` has the record, at any position;
    /// otherwise the first record is selected.
    void Follow(Player const& player, Programme const& next);
};

} // namespace zviptv::sim
