#pragma once

#include "dbus/Singleton.h"
#include "log/Log.h"

#include <zviptv/IPTVTypes.h>
#include <zviptv/ProxyDBusHelper.h>

#include <atomic>
#include <memory>
#include <optional>

namespace zviptv {

/// What a proxy has from its Create to its Destroy: a channel to the service, and the handle of its requests.
///
/// The proxies themselves are made once and never deleted, so that no pointer to one dangles. A call takes a
/// reference to the session first; without a session it is refused. The session's end does not wait for
/// calls: the last reference frees the memory.
class Session
{
public:
    /// Makes the channel; `typeWord` is its name.
    explicit Session(char const* typeWord, std::optional<IPTVHandle> handle = std::nullopt);

    /// Announces the channel on the helper bus and connects it to the partner that the service names. A
    /// channel that cannot be connected stays as it is: its sends fail.
    void Connect(SourceLocation const& where);

    /// Tells the helper bus that the channel goes away, then withdraws it. Until then it answers the service.
    void Leave();

    /// Returns when no callback of the channel runs on another thread. After Leave().
    void WaitForCallbacks();

    CProxyDBusHelper& Channel() { return m_channel; }
    std::optional<IPTVHandle> const& Handle() const { return m_handle; }
    /// Leave() has begun.
    bool IsLeaving() const { return m_isLeaving; }

private:
    char const* const m_typeWord;
    std::optional<IPTVHandle> const m_handle;
    std::atomic<bool> m_isLeaving{false};
    CProxyDBusHelper m_channel;
};

/// Whether the service runs; a log line says when it does not.
bool IsServiceRunning(SourceLocation const& where);

/// Ends the session, if there is one; returns when none of its callbacks runs on another thread.
template <typename AnySession>
void EndSession(Singleton<AnySession>& sessions)
{
    if (auto const ended = sessions.End([](AnySession& session) { session.Leave(); })) {
        ended->WaitForCallbacks();
    }
}

} // namespace zviptv
