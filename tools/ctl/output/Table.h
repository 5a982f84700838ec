// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace zviptv::ctl {

/// Columns of text, as wide as their widest cell, with a heading; a star marks the current row.
class Table
{
public:
    using Row = std::vector<std::string>;

    explicit Table(Row headings);

    /// Adds a row with as many cells as there are headings.
    void Add(Row cells, bool isCurrent = false);

    /// The whole table; a line with `nothing` if there is no row.
    std::string Text(std::string const& nothing) const;

private:
    struct Line
    {
        Row cells;
        bool isCurrent;
    };

    std::string Format(Line const& line) const;

    std::vector<std::size_t> m_widths;
    std::vector<Line> m_lines;
};

} // namespace zviptv::ctl
