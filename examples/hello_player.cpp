// SPDX-License-Identifier: MIT
// Mutes and unmutes the service: the smallest application.
#include <zviptv/IPTVServiceAPI.h>

#include <iostream>

int main()
{
    IPlayerControl* player = nullptr;
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &player);
    if (player == nullptr) {
        std::cerr << ZVGetLastFailure().message << "\n";
        return 3;
    }
    EZVSourceState state = ZV_SOURCE_STATE_UNKNOWN;
    bool const muted = player->MuteAudio(true);
    bool const known = player->GetSourceState(state);
    bool const unmuted = player->MuteAudio(false);
    CIPTVServiceAPI::DestroyPlayerControl();

    std::cout << "muted: " << muted << ", source state: " << state << ", unmuted: " << unmuted << "\n";
    return muted && known && unmuted ? 0 : 1;
}
