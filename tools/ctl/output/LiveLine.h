// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

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

    /// Shows the text instead of the former one, and as many of `more` behind it as fit in the terminal's
    /// width; an ellipsis stands for the rest.
    void Show(std::string const& text, std::vector<std::string> const& more = {});

    /// Makes room for other output, which may follow on the same terminal.
    void Erase();

    /// Leaves the line as it is; other output follows below it.
    void End();

private:
    std::size_t Width() const;
    void Write(std::string const& text) const;

    int m_descriptor;
    bool m_isTerminal;
    bool m_isShown = false;
};

} // namespace zviptv::ctl
