// SPDX-License-Identifier: MIT
#pragma once

#include <libsoup/soup.h>

#include <string>

namespace zviptv::sim {

/// Decides who may use the panel: a page of the panel itself that knows the token.
class Access
{
public:
    /// Makes a random token. @throws std::system_error
    Access();

    /// The port that the panel listens on.
    void SetPort(unsigned port) { m_port = std::to_string(port); }

    /// The path above all files: "/TOKEN/".
    std::string const& Root() const { return m_root; }

    /// The address for the browser.
    std::string Address() const { return "http://127.0.0.1:" + m_port + m_root; }

    /// Whether a request with this path and these headers may be answered: it is below Root(), its host is
    /// that of Address() or localhost, and it was not sent by a page of another origin.
    bool Allows(std::string const& path, SoupMessageHeaders* heads) const;

private:
    bool IsOwnHost(std::string const& host) const;

    std::string m_root;
    std::string m_port;
};

} // namespace zviptv::sim
