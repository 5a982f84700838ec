// SPDX-License-Identifier: MIT
#pragma once

#include <libsoup/soup.h>

#include <string>

namespace zviptv::sim {

/// Who may use the panel: those who know its token, from a page of the panel itself.
class Access
{
public:
    /// Draws the token. @throws std::system_error
    Access();

    /// The port that the panel listens on.
    void SetPort(unsigned port) { m_port = std::to_string(port); }

    /// The path below which everything is: "/TOKEN/".
    std::string const& Root() const { return m_root; }

    /// The address for the browser.
    std::string Address() const { return "http://127.0.0.1:" + m_port + m_root; }

    /// Whether a request with this path and these heads is of the panel's own user: below Root(), addressed
    /// to this machine by the name that Address() has or as localhost, and not sent by a page of another
    /// origin.
    bool Allows(std::string const& path, SoupMessageHeaders* heads) const;

private:
    bool IsOwnHost(std::string const& host) const;

    std::string m_root;
    std::string m_port;
};

} // namespace zviptv::sim
