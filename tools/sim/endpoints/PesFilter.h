// SPDX-License-Identifier: MIT
#pragma once

#include "stream/Event.h"

#include <cstdint>
#include <set>
#include <string>

namespace zviptv::sim {

/// Which PES packets go to subscribers.
class PesFilter
{
public:
    /// From a list of kinds and PIDs, "audio,subtitle,0x1FF", or "none"; everything when empty. PIDs are
    /// decimal, or hexadecimal behind 0x.
    /// @throws std::invalid_argument with a line for the user
    static PesFilter Parse(std::string const& text);

    bool Passes(PesPacket const& pes) const;

private:
    bool m_all = false;
    std::set<StreamKind> m_kinds;
    std::set<std::uint16_t> m_pids;
};

} // namespace zviptv::sim
