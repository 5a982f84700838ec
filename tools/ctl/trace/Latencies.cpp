// SPDX-License-Identifier: MIT
#include "Latencies.h"

#include <algorithm>
#include <cmath>

namespace zviptv::ctl {

namespace {

double const Width = std::log(1.01);

} // namespace

void Latencies::Add(std::int64_t microseconds)
{
    auto const time = static_cast<double>(std::max<std::int64_t>(microseconds, 1));
    auto const index = static_cast<std::size_t>(std::log(time) / Width);
    ++m_classes[std::min(index, Classes - 1)];
    ++m_count;
    m_max = std::max(m_max, microseconds);
}

std::int64_t Latencies::Percentile(double percent) const
{
    auto const wanted = static_cast<std::uint64_t>(std::ceil(static_cast<double>(m_count) * percent / 100));
    std::uint64_t passed = 0;
    for (std::size_t index = 0; index < Classes && m_count > 0; ++index) {
        passed += m_classes[index];
        if (passed >= wanted) {
            auto const end = static_cast<std::int64_t>(std::exp(static_cast<double>(index + 1) * Width));
            return std::min(end, m_max);
        }
    }
    return m_max;
}

} // namespace zviptv::ctl
