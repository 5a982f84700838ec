// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstdint>

namespace zviptv::ctl {

/// Counts times in classes that are 1 % wide: its memory does not grow with their number.
class Latencies
{
public:
    void Add(std::int64_t microseconds);

    std::uint64_t Count() const { return m_count; }
    std::int64_t Max() const { return m_max; } ///< exact, in microseconds; 0 if there is none

    /// The time that `percent` of the times do not exceed, at most 1 % too long; 0 if there is none.
    std::int64_t Percentile(double percent) const;

private:
    static constexpr std::size_t Classes = 2'400; ///< up to hours

    std::array<std::uint32_t, Classes> m_classes{};
    std::uint64_t m_count = 0;
    std::int64_t m_max = 0;
};

} // namespace zviptv::ctl
