// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A word of a line.
struct Word
{
    std::string text;    ///< without its quotation marks
    unsigned column = 1; ///< column of its first character, from 1
    unsigned end = 1;    ///< the column after it
};

struct Line
{
    std::vector<Word> words;
    std::string text; ///< without blanks around it, and without a comment
};

/// An error at a column of a line.
class LineError : public std::runtime_error
{
public:
    LineError(unsigned column, std::string const& text) : std::runtime_error(text), m_column(column) {}
    unsigned Column() const { return m_column; }

private:
    unsigned m_column;
};

/// Splits a line into words. Blanks separate words; "..." encloses any text, in which a backslash precedes a
/// quotation mark or a backslash. # at the beginning of a word begins a comment.
/// @throws LineError if a quotation mark is not closed, or the line contains a NUL byte
Line SplitLine(std::string const& text);

} // namespace zviptv::sim
