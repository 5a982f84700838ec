// SPDX-License-Identifier: MIT
#include "Table.h"

#include <algorithm>
#include <utility>

namespace zviptv::ctl {

Table::Table(Row headings) : m_widths(headings.size())
{
    Add(std::move(headings));
}

void Table::Add(Row cells, bool isCurrent)
{
    for (std::size_t column = 0; column < m_widths.size(); ++column) {
        m_widths[column] = std::max(m_widths[column], cells.at(column).size());
    }
    m_lines.push_back({std::move(cells), isCurrent});
}

std::string Table::Text(std::string const& nothing) const
{
    if (m_lines.size() == 1) {
        return nothing + "\n";
    }
    std::string text;
    for (Line const& line : m_lines) {
        text += Format(line);
    }
    return text;
}

std::string Table::Format(Line const& line) const
{
    std::string text = line.isCurrent ? "*" : " ";
    for (std::size_t column = 0; column < m_widths.size(); ++column) {
        std::string const& cell = line.cells[column];
        text += " " + cell + std::string(m_widths[column] - cell.size() + 1, ' ');
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text + "\n";
}

} // namespace zviptv::ctl
