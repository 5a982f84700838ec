#include "LiveLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace zviptv::ctl {

namespace {
constexpr char const* ClearLine = "\r\033[K";
}

LiveLine::LiveLine(int descriptor) : m_descriptor(descriptor), m_isTerminal(isatty(descriptor) == 1) {}

LiveLine::~LiveLine()
{
    Erase();
}

void LiveLine::Show(std::string const& text)
{
    if (m_isTerminal) {
        Write(ClearLine + text.substr(0, Width() - 1));
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

std::size_t LiveLine::Width() const
{
    winsize size{};
    constexpr std::size_t usual = 80;
    return ioctl(m_descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 1 ? size.ws_col : usual;
}

void LiveLine::Write(std::string const& text) const
{
    // For the eye only: what does not get through is not missed.
    static_cast<void>(!write(m_descriptor, text.data(), text.size()));
}

} // namespace zviptv::ctl
