// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A guide cannot be read; what() is one line for the user: the file, the line and column if there are any,
/// and the reason.
class GuideError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Warnings about a guide that could be read: their number, and the texts of the first ones.
class GuideWarnings
{
public:
    static constexpr std::size_t MaxKept = 20;

    /// Adds a warning; with `line` 0, it is not about a single line.
    void Add(std::uint64_t line, std::string const& text)
    {
        ++m_count;
        if (m_first.size() < MaxKept) {
            m_first.push_back(line == 0 ? text : "line " + std::to_string(line) + ": " + text);
        }
    }

    std::size_t Count() const { return m_count; }

    /// The first warnings, at most MaxKept: "line 12: no such day".
    std::vector<std::string> const& First() const { return m_first; }

private:
    std::size_t m_count = 0;
    std::vector<std::string> m_first;
};

} // namespace zviptv::sim
