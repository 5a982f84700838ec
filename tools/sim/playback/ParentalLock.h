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
    std::optional<std::int64_t> start; ///< seconds since 1970; nothing when the guide knows no programme
    int minimumAge = 0;                ///< 0 for none
};

/// The viewer's lock: programmes above an age, and the service as a whole, until they are unlocked.
class ParentalLock
{
public:
    /// `limit`: the highest minimum age that plays without a PIN; nothing locks no programme.
    ParentalLock(std::optional<int> limit, bool serviceLocked)
        : m_limit(limit), m_serviceLocked(serviceLocked)
    {
    }

    /// The programme that is on. Another programme or age ends the unlocking of a programme; another
    /// service also ends that of a service.
    void Follow(RatedProgramme const& present);

    int MinimumAge() const { return m_present.minimumAge; }
    bool IsProgrammeLocked() const;
    bool IsServiceLocked() const;

    void Unlock(EZVParentalLock lock) { m_unlocked = lock; }

    /// The control interface locks, whatever applications have unlocked, or ends that and what the options
    /// say.
    void LockProgramme(bool on);
    void LockService(bool on);

    /// LockProgramme() was called last with true.
    bool LocksEveryProgramme() const { return m_locksEvery; }
    /// Whether the service is locked until it is unlocked.
    bool LocksService() const { return m_serviceLocked; }

    /// The PIN was entered: the present programme plays. False when it was not locked.
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
