// SPDX-License-Identifier: MIT
#include "stream/TableCollector.h"

namespace zviptv::sim {

TableCollector::Sections const* TableCollector::Push(std::vector<std::uint8_t> section)
{
    ByteView const view(section);
    std::uint8_t const number = view[6];
    std::uint8_t const last = view[7];
    std::uint32_t const identity = (view.U32(3) & 0xFFFFFF00u) | last;
    auto const old = m_sections.find(number);
    bool const isOfThisTable = identity == m_identity && (old == m_sections.end() || old->second == section);
    if (isOfThisTable && old != m_sections.end()) {
        return nullptr;
    }
    if (!isOfThisTable) {
        m_sections.clear();
        m_identity = identity;
    }
    m_sections.emplace(number, std::move(section));
    return m_sections.size() > last ? &m_sections : nullptr;
}

} // namespace zviptv::sim
