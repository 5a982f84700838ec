// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/ByteView.h>

#include <map>

namespace zviptv::sim {

/// Collects the sections of one table (a PAT, a PMT, an SDT) until it is complete. A section that differs
/// from the one with the same number begins a new table, whatever its version.
class TableCollector
{
public:
    using Sections = std::map<std::uint8_t, std::vector<std::uint8_t>>; ///< by number

    /// Adds a valid section (see IsValidSection). Returns all sections if this one completes a new table,
    /// otherwise null. They are valid until the next Push().
    Sections const* Push(std::vector<std::uint8_t> section);

private:
    std::uint32_t m_identity = 0; ///< extension, version and last section number
    Sections m_sections;
};

} // namespace zviptv::sim
