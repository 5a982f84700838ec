// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Demux.h"

#include <chrono>
#include <optional>
#include <string>

namespace zviptv::sim {

/// Measures the duration of a file by reading it once more to the end, a few milliseconds at a time.
class DurationScan
{
public:
    /// @throws StreamError
    DurationScan(std::string const& path, std::uint16_t programme) : m_demux(path)
    {
        m_demux.Select(programme);
    }

    /// Reads for a short while; returns the duration at the end. @throws StreamError
    std::optional<std::chrono::duration<double>> Advance()
    {
        auto const turnEnds = std::chrono::steady_clock::now() + Turn;
        while (std::chrono::steady_clock::now() < turnEnds) {
            std::optional<Event> const event = m_demux.Next();
            if (!event) {
                return m_last;
            }
            m_last = event->at.time;
        }
        return std::nullopt;
    }

private:
    static constexpr std::chrono::milliseconds Turn{3};

    Demux m_demux;
    StreamTime m_last{};
};

} // namespace zviptv::sim
