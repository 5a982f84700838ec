// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Client.h>

#include <chrono>
#include <string>

/// What the application does with the television. Replace it with your own.
class Player
{
public:
    /// Mutes the sound or turns it on again. Tries a second time if the first attempt fails.
    bool Mute(bool on);

    /// Waits until the programme is locked, and unlocks it, as after entering the PIN. False if that fails,
    /// or the programme was not locked within this time.
    bool UnlockWhenLocked(std::chrono::milliseconds within);

    /// The last failure, in one line for people.
    std::string const& Problem() const { return m_problem; }

private:
    /// Keeps the failure; returns false.
    bool Fail(zviptv::Failure const& failure);

    zviptv::Television m_television;
    std::string m_problem;
};
