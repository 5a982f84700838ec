// SPDX-License-Identifier: MIT
#include "ParentalLock.h"

namespace zviptv::sim {

void ParentalLock::Follow(RatedProgramme const& present)
{
    bool const isSame = m_present.service == present.service && m_present.start == present.start &&
                        m_present.minimumAge == present.minimumAge;
    if (!isSame && m_unlocked == ZV_PARENTAL_UNLOCKED_PROGRAMME) {
        m_unlocked = ZV_PARENTAL_LOCKED;
    }
    if (m_present.service != present.service && m_unlocked == ZV_PARENTAL_UNLOCKED_SERVICE) {
        m_unlocked = ZV_PARENTAL_LOCKED;
    }
    m_present = present;
}

bool ParentalLock::IsProgrammeLocked() const
{
    bool const isAbove = m_locksEvery || (m_limit && m_present.minimumAge > *m_limit);
    return !m_factoryMode && m_unlocked == ZV_PARENTAL_LOCKED && isAbove;
}

bool ParentalLock::IsServiceLocked() const
{
    bool const unlocked =
        m_unlocked == ZV_PARENTAL_UNLOCKED_SERVICE || m_unlocked == ZV_PARENTAL_UNLOCKED_ALL;
    return !m_factoryMode && m_serviceLocked && !unlocked;
}

void ParentalLock::LockProgramme(bool on)
{
    m_locksEvery = on;
    if (on) {
        m_unlocked = ZV_PARENTAL_LOCKED;
    } else {
        EnterPin(); // the rating may still lock it
    }
}

void ParentalLock::LockService(bool on)
{
    m_serviceLocked = on;
    bool const isUnlocked =
        m_unlocked == ZV_PARENTAL_UNLOCKED_SERVICE || m_unlocked == ZV_PARENTAL_UNLOCKED_ALL;
    if (on && isUnlocked) {
        m_unlocked = ZV_PARENTAL_LOCKED;
    }
}

bool ParentalLock::EnterPin()
{
    bool const wasLocked = IsProgrammeLocked();
    if (wasLocked) {
        m_unlocked = ZV_PARENTAL_UNLOCKED_PROGRAMME;
    }
    return wasLocked;
}

} // namespace zviptv::sim
