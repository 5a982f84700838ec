// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace zviptv::ctl {

/// A line at the bottom of a terminal that is rewritten in place. Does nothing if `descriptor` is not a
/// terminal.
class LiveLine
{
public:
    explicit LiveLine(int descriptor);
    ~LiveLine();

    LiveLine(LiveLine const&) = delete;
    LiveLine& operator=(LiveLine const&) = delete;

    bool IsTerminal() const { return m_isTerminal; }

    /// Replaces the text, followed by as many of `more` as fit into the terminal's width; an ellipsis
    /// replaces the rest.
    void Show(std::string const& text, std::vector<std::string> const& more = {});

    /// Removes the line, so that other output can follow on the same terminal.
    void Erase();

    /// Keeps the line; other output follows below it.
    void End();

private:
    std::size_t Width() const;
    void Write(std::string const& text) const;

    int m_descriptor;
    bool m_isTerminal;
    bool m_isShown = false;
};

} // namespace zviptv::ctl
