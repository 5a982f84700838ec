#pragma once

#include <zviptv/IPTVTypes.h>

#include <cstdint>
#include <optional>

namespace zviptv::sim {

/// The viewer's lock: programmes above an age, and the service as a whole, until they are unlocked.
class ParentalLock
{
public:
    /// `limit`: the highest minimum age that plays without a PIN; nothing locks no programme.
    ParentalLock(std::optional<int> limit, bool serviceLocked)
        : m_limit(limit), m_serviceLocked(serviceLocked)
    {
    }

    /// The minimum age of the programme that is on, 0 for none. Another age means another programme, for
    /// which a programme's unlocking does not count.
    void Follow(int minimumAge);

    int MinimumAge() const { return m_minimumAge; }
    bool IsProgrammeLocked() const;
    bool IsServiceLocked() const;

    /// A locked programme is mute until it is unlocked.
    bool IsMuted() const { return IsProgrammeLocked() || IsServiceLocked(); }

    void Unlock(EZVParentalLock lock) { m_unlocked = lock; }

    /// The PIN was entered: the present programme plays. False when it was not locked.
    bool EnterPin();

    void SetFactoryMode(bool on) { m_factoryMode = on; }

private:
    std::optional<int> m_limit;
    bool m_serviceLocked;
    int m_minimumAge = 0;
    EZVParentalLock m_unlocked = ZV_PARENTAL_LOCKED;
    bool m_factoryMode = false;
};

} // namespace zviptv::sim
