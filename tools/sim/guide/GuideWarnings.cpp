#include "guide/GuideWarnings.h"

namespace zviptv::sim {

void GuideWarnings::Add(std::uint64_t line, std::string const& text)
{
    ++m_count;
    if (m_first.size() < MaxKept)
        m_first.push_back(line == 0 ? text : "line " + std::to_string(line) + ": " + text);
}

} // namespace zviptv::sim
