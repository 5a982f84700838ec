// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A guide cannot be read; what() is one line for the user: file, line, column where there are any, and why.
class GuideError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What was wrong with a guide without keeping it from being read: the number of all, the words of the first.
class GuideWarnings
{
public:
    static constexpr std::size_t MaxKept = 20;

    /// `line` 0: not of a single line.
    void Add(std::uint64_t line, std::string const& text)
    {
        ++m_count;
        if (m_first.size() < MaxKept) {
            m_first.push_back(line == 0 ? text : "line " + std::to_string(line) + ": " + text);
        }
    }

    std::size_t Count() const { return m_count; }

    /// At most MaxKept, in the order found: "line 12: no such day".
    std::vector<std::string> const& First() const { return m_first; }

private:
    std::size_t m_count = 0;
    std::vector<std::string> m_first;
};

} // namespace zviptv::sim
