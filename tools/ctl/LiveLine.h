#pragma once

#include <string>

namespace zviptv::ctl {

/// A line at the bottom of a terminal that is rewritten in place. Does nothing where `descriptor` is no
/// terminal.
class LiveLine
{
public:
    explicit LiveLine(int descriptor);
    ~LiveLine();

    LiveLine(LiveLine const&) = delete;
    LiveLine& operator=(LiveLine const&) = delete;

    bool IsTerminal() const { return m_isTerminal; }

    /// Shows the text instead of the former one, cut to the terminal's width.
    void Show(std::string const& text);

    /// Makes room for other output, which may follow on the same terminal.
    void Erase();

private:
    std::size_t Width() const;
    void Write(std::string const& text) const;

    int m_descriptor;
    bool m_isTerminal;
    bool m_isShown = false;
};

} // namespace zviptv::ctl
