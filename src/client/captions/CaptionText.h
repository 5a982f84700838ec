// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Caption.h>

#include <string>

namespace zviptv {

/// Builds one line from characters or pieces of text, with a run for each appearance.
class LineBuilder
{
public:
    /// Appends text with the appearance of `look`, whose own text is ignored.
    void Add(std::string const& text, CaptionRun const& look);

    /// Appends a line with the text added since the last call, without spaces at its ends, unless it is
    /// empty.
    void EndLine(std::vector<CaptionLine>& lines);

private:
    CaptionLine m_line;
};

/// The character in UTF-8; a space for controls and for numbers that are not characters.
std::string ToUtf8(unsigned character);

} // namespace zviptv
