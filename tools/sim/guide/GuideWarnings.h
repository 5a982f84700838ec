#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zviptv::sim {

/// What was wrong with a guide without keeping it from being read: the number of all, the words of the first.
class GuideWarnings
{
public:
    static constexpr std::size_t MaxKept = 20;

    /// `line` 0: not of a single line.
    void Add(std::uint64_t line, std::string const& text);

    std::size_t Count() const { return m_count; }

    /// At most MaxKept, in the order found: "line 12: no such day".
    std::vector<std::string> const& First() const { return m_first; }

private:
    std::size_t m_count = 0;
    std::vector<std::string> m_first;
};

} // namespace zviptv::sim
