// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <string>

/// What the application does with the television. Replace it with your own.
class Player
{
public:
    Player();
    ~Player();
    Player(Player const&) = delete;
    Player& operator=(Player const&) = delete;

    /// Mutes the sound or turns it on again. Tries a second time if the first attempt fails.
    bool Mute(bool on);

    /// Waits until the programme is locked, and unlocks it, as after entering the PIN. False if that fails,
    /// or the programme was not locked within this time.
    bool UnlockWhenLocked(std::chrono::milliseconds within);

    /// The reason of the last failure, in words.
    std::string const& Problem() const { return m_problem; }

private:
    /// Keeps the reason why the last call failed; returns false.
    bool Fail();

    std::string m_problem;
};
