// SPDX-License-Identifier: MIT
#include "Player.h"

#include <zviptv/Failure.h>
#include <zviptv/IPTVServiceAPI.h>

#include <thread>

namespace {

/// Null if there is no service. The objects end themselves when the service leaves, so pointers are not kept.
IPlayerControl* Control()
{
    IPlayerControl* control = nullptr;
    CIPTVServiceAPI::CreatePlayerControl(IPTV_PROFILE_DEFAULT, 0, &control);
    return control;
}

IBroadcastData* Broadcast()
{
    IBroadcastData* broadcast = nullptr;
    CIPTVServiceAPI::CreateBroadcastData(IPTV_PROFILE_DEFAULT, 0, &broadcast);
    return broadcast;
}

} // namespace

Player::Player() = default;

Player::~Player()
{
    CIPTVServiceAPI::DestroyPlayerControl();
    CIPTVServiceAPI::DestroyBroadcastData();
}

bool Player::Fail()
{
    m_problem = ZVFailureKindName(ZVGetLastFailure().kind);
    return false;
}

bool Player::Mute(bool on)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        IPlayerControl* const control = Control();
        if (control != nullptr && control->MuteAudio(on)) {
            return true;
        }
    }
    return Fail();
}

bool Player::UnlockWhenLocked(std::chrono::milliseconds within)
{
    auto const end = std::chrono::steady_clock::now() + within;
    do {
        IBroadcastData* const broadcast = Broadcast();
        bool isLocked = false;
        if (broadcast == nullptr || !broadcast->GetRatingLockState(isLocked)) {
            return Fail();
        }
        if (isLocked) {
            return broadcast->UnMuteByRatingPin() || Fail();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    } while (std::chrono::steady_clock::now() < end);
    m_problem = "the programme was not locked";
    return false;
}
