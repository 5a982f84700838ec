// SPDX-License-Identifier: MIT
#include "CaptionText.h"

#include <utility>

namespace zviptv {

namespace {

constexpr char const* Spaces[] = {" ", "\u3000"};

bool StartsWith(std::string const& text, std::string const& start)
{
    return text.compare(0, start.size(), start) == 0;
}

bool EndsWith(std::string const& text, std::string const& end)
{
    return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool DropFirstSpace(std::string& text)
{
    for (std::string const space : Spaces) {
        if (StartsWith(text, space)) {
            text.erase(0, space.size());
            return true;
        }
    }
    return false;
}

bool DropLastSpace(std::string& text)
{
    for (std::string const space : Spaces) {
        if (EndsWith(text, space)) {
            text.erase(text.size() - space.size());
            return true;
        }
    }
    return false;
}

bool LooksAlike(CaptionRun one, CaptionRun const& other)
{
    one.text = other.text;
    return one == other;
}

void Trim(std::vector<CaptionRun>& runs)
{
    while (!runs.empty() && (runs.front().text.empty() || DropFirstSpace(runs.front().text))) {
        if (runs.front().text.empty()) {
            runs.erase(runs.begin());
        }
    }
    while (!runs.empty() && (runs.back().text.empty() || DropLastSpace(runs.back().text))) {
        if (runs.back().text.empty()) {
            runs.pop_back();
        }
    }
}

} // namespace

char const* ToString(CaptionKind kind)
{
    switch (kind) {
    case CaptionKind::Teletext:
        return "teletext";
    case CaptionKind::AribCaption:
        return "caption";
    case CaptionKind::AribSuperimpose:
        return "superimpose";
    }
    return "unknown";
}

std::string CaptionLine::Text() const
{
    std::string text;
    for (CaptionRun const& run : runs) {
        text += run.text;
    }
    return text;
}

std::string Caption::Text() const
{
    std::string text;
    for (CaptionLine const& line : lines) {
        text += (text.empty() ? "" : "\n") + line.Text();
    }
    return text;
}

void LineBuilder::Add(std::string const& text, CaptionRun const& look)
{
    if (m_line.runs.empty() || !LooksAlike(m_line.runs.back(), look)) {
        m_line.runs.push_back(look);
        m_line.runs.back().text.clear();
    }
    m_line.runs.back().text += text;
}

void LineBuilder::EndLine(std::vector<CaptionLine>& lines)
{
    Trim(m_line.runs);
    if (!m_line.runs.empty()) {
        lines.push_back(std::move(m_line));
    }
    m_line = CaptionLine();
}

std::string ToUtf8(unsigned character)
{
    bool const isControl = character < 0x20 || (character >= 0x7F && character <= 0xA0);
    bool const isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    auto const part = [&](unsigned shift, unsigned mark, unsigned mask) {
        return static_cast<char>(mark | (character >> shift & mask));
    };
    if (isControl || isSurrogate || character > 0xFFFF) {
        return " ";
    }
    if (character < 0x80) {
        return {part(0, 0, 0x7F)};
    }
    if (character < 0x800) {
        return {part(6, 0xC0, 0x1F), part(0, 0x80, 0x3F)};
    }
    return {part(12, 0xE0, 0x0F), part(6, 0x80, 0x3F), part(0, 0x80, 0x3F)};
}

} // namespace zviptv
