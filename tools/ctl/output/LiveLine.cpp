// SPDX-License-Identifier: MIT
#include "LiveLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

namespace zviptv::ctl {

namespace {

constexpr char const* ClearLine = "\r\033[K";

std::string Fitted(std::string text, std::vector<std::string> const& more, std::size_t width)
{
    std::string const ellipsis = " ...";
    bool fits = text.size() <= width;
    for (std::size_t index = 0; fits && index < more.size(); ++index) {
        std::size_t const reserved = index + 1 == more.size() ? 0 : ellipsis.size();
        fits = text.size() + more[index].size() + reserved <= width;
        text += fits ? more[index] : "";
    }
    return fits ? text : text.substr(0, width - std::min(width, ellipsis.size())) + ellipsis.substr(0, width);
}

} // namespace

LiveLine::LiveLine(int descriptor) : m_descriptor(descriptor), m_isTerminal(isatty(descriptor) == 1) {}

LiveLine::~LiveLine()
{
    Erase();
}

void LiveLine::Show(std::string const& text, std::vector<std::string> const& more)
{
    if (m_isTerminal) {
        Write(ClearLine + Fitted(text, more, Width() - 1));
        m_isShown = true;
    }
}

void LiveLine::Erase()
{
    if (m_isShown) {
        Write(ClearLine);
        m_isShown = false;
    }
}

void LiveLine::End()
{
    if (m_isShown) {
        Write("\n");
        m_isShown = false;
    }
}

std::size_t LiveLine::Width() const
{
    winsize size{};
    constexpr std::size_t usual = 80;
    return ioctl(m_descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : usual;
}

void LiveLine::Write(std::string const& text) const
{
    // Only for people: errors are ignored.
    static_cast<void>(!write(m_descriptor, text.data(), text.size()));
}

} // namespace zviptv::ctl
