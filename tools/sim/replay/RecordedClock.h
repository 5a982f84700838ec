// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

namespace zviptv::sim {

/// The time since the first message of a recording. The clock of the television may have been set meanwhile:
/// a step back, or more than a day forward, takes no time.
class RecordedClock
{
public:
    /// Advances to the next message, which was recorded at `time`, in microseconds since 1970. Returns the
    /// time since the first one.
    std::chrono::microseconds Advance(std::int64_t time)
    {
        std::chrono::microseconds const step(time - m_latest.value_or(time));
        m_latest = time;
        if (step > std::chrono::microseconds(0) && step <= std::chrono::hours(24)) {
            m_now += step;
        }
        return m_now;
    }

private:
    std::optional<std::int64_t> m_latest;
    std::chrono::microseconds m_now{0};
};

} // namespace zviptv::sim
