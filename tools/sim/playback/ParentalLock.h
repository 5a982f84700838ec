// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/IPTVTypes.h>

#include <cstdint>
#include <optional>

namespace zviptv::sim {

/// A programme of the guide.
struct RatedProgramme
{
    std::uint64_t service = 0;
    std::optional<std::int64_t> start; ///< seconds since 1970; empty if the guide has no programme
    int minimumAge = 0;                ///< 0 for none
};

/// The viewer's lock of programmes above an age, and of the whole service, until they are unlocked.
class ParentalLock
{
public:
    /// `limit`: the highest minimum age that plays without a PIN; if empty, no programme is locked.
    ParentalLock(std::optional<int> limit, bool serviceLocked)
        : m_limit(limit), m_serviceLocked(serviceLocked)
    {
    }

    /// Sets the present programme. Another programme or age ends the unlocking of a programme; another
    /// service also ends that of a service.
    void Follow(RatedProgramme const& present);

    int MinimumAge() const { return m_present.minimumAge; }
    bool IsProgrammeLocked() const;
    bool IsServiceLocked() const;

    void Unlock(EZVParentalLock lock) { m_unlocked = lock; }

    /// A lock by the control interface, which overrides the unlocking by applications; or its end, which also
    /// ends the lock of the options.
    void LockProgramme(bool on);
    void LockService(bool on);

    /// Whether the last LockProgramme() was called with true.
    bool LocksEveryProgramme() const { return m_locksEvery; }
    /// Whether the service is locked until it is unlocked.
    bool LocksService() const { return m_serviceLocked; }

    /// Unlocks the present programme after the PIN was entered. Returns false if it was not locked.
    bool EnterPin();

    void SetFactoryMode(bool on) { m_factoryMode = on; }

private:
    std::optional<int> m_limit;
    bool m_locksEvery = false; ///< programmes of every age
    bool m_serviceLocked;
    RatedProgramme m_present;
    EZVParentalLock m_unlocked = ZV_PARENTAL_LOCKED;
    bool m_factoryMode = false;
};

} // namespace zviptv::sim
