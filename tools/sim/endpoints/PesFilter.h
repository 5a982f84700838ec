// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Event.h"

#include <cstdint>
#include <set>
#include <string>

namespace zviptv::sim {

/// Selects the PES packets for subscribers.
class PesFilter
{
public:
    /// Reads a list of kinds and PIDs, "audio,subtitle,0x1FF", or "none"; an empty text selects everything.
    /// PIDs are decimal, or hexadecimal after 0x.
    /// @throws std::invalid_argument with a line for the user
    static PesFilter Parse(std::string const& text);

    bool Passes(PesPacket const& pes) const;

private:
    bool m_all = false;
    std::set<StreamKind> m_kinds;
    std::set<std::uint16_t> m_pids;
};

} // namespace zviptv::sim
