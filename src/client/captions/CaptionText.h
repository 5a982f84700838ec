// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Caption.h>

#include <string>

namespace zviptv {

/// Builds one line from characters or pieces of text, with a run for each appearance.
class LineBuilder
{
public:
    /// Appends text that looks as `look` says; the text of `look` does not count.
    void Add(std::string const& text, CaptionRun const& look);

    /// Appends a line with what was added since the last call, without spaces at its ends, unless that is
    /// nothing.
    void EndLine(std::vector<CaptionLine>& lines);

private:
    CaptionLine m_line;
};

/// The character in UTF-8; a space for controls and for numbers that are not characters.
std::string ToUtf8(unsigned character);

} // namespace zviptv
