// SPDX-License-Identifier: MIT
#include "Player.h"

#include <thread>

bool Player::Fail(zviptv::Failure const& failure)
{
    m_problem = ToString(failure);
    return false;
}

bool Player::Mute(bool on)
{
    auto muted = m_television.Player().MuteAudio(on);
    if (!muted) {
        muted = m_television.Player().MuteAudio(on);
    }
    return muted || Fail(muted.GetFailure());
}

bool Player::UnlockWhenLocked(std::chrono::milliseconds within)
{
    auto const end = std::chrono::steady_clock::now() + within;
    do {
        auto const isLocked = m_television.Broadcast().GetRatingLockState();
        if (!isLocked) {
            return Fail(isLocked.GetFailure());
        }
        if (*isLocked) {
            auto const unlocked = m_television.Broadcast().UnMuteByRatingPin();
            return unlocked || Fail(unlocked.GetFailure());
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    } while (std::chrono::steady_clock::now() < end);
    m_problem = "the programme was not locked";
    return false;
}
