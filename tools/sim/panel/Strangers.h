// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <gio/gio.h>

#include <algorithm>
#include <deque>
#include <utility>

namespace zviptv::sim {

/// The connections that have not sent the token. Anybody on the machine can connect, and may send nothing or
/// an endless request. So that they do not use up the descriptors, the oldest ones are closed.
class Strangers
{
public:
    static constexpr std::size_t Most = 128;

    /// Adds a new connection.
    void Add(Owned<GSocket> socket, Owned<GSocketAddress> remote)
    {
        auto const isClosed = [](Stranger const& one) {
            return g_socket_is_closed(one.socket.get()) != FALSE;
        };
        m_strangers.erase(std::remove_if(m_strangers.begin(), m_strangers.end(), isClosed),
                          m_strangers.end());
        m_strangers.push_back({std::move(socket), std::move(remote)});
        if (m_strangers.size() > Most) {
            g_socket_shutdown(m_strangers.front().socket.get(), TRUE, TRUE, nullptr); // the server closes it
            m_strangers.pop_front();
        }
    }

    /// The connection from this address has sent the token.
    void Remove(GSocketAddress* remote)
    {
        auto const isRemote = [remote](Stranger const& one) { return one.remote.get() == remote; };
        m_strangers.erase(std::remove_if(m_strangers.begin(), m_strangers.end(), isRemote),
                          m_strangers.end());
    }

private:
    struct Stranger
    {
        Owned<GSocket> socket;
        Owned<GSocketAddress> remote;
    };

    std::deque<Stranger> m_strangers; ///< the oldest first
};

} // namespace zviptv::sim
