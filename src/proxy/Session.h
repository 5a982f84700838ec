// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/Singleton.h"
#include "failure/LastFailure.h"
#include "log/Log.h"

#include <zviptv/IPTVTypes.h>
#include <zviptv/ProxyDBusHelper.h>

#include <atomic>
#include <memory>
#include <optional>

namespace zviptv {

/// The state of a proxy from its Create to its Destroy: a channel to the service, and the handle of its
/// requests.
///
/// The proxies themselves are made once and never deleted, so that no pointer to one dangles. A call first
/// takes a reference to the session; without a session it is refused. The end of a session does not wait for
/// calls: the last reference frees the memory.
class Session
{
public:
    /// Makes the channel; `typeWord` is its name.
    explicit Session(char const* typeWord, std::optional<IPTVHandle> handle = std::nullopt);

    /// Announces the channel on the helper bus and connects it to the partner that the service names. If the
    /// channel cannot be connected, it is kept, and its sends fail.
    void Connect(SourceLocation const& where);

    /// Whether the bus of the channel has died and a bus is available again, so that the session must be
    /// replaced.
    bool IsOutdated() const;

    /// Announces the end of the channel on the helper bus, if it is still on the same bus, then closes the
    /// channel. Until then, the channel answers the service.
    void Leave();

    /// Sets the calling thread's failure to that of Leave(), if it failed.
    void RecallLeaveFailure() const { m_leaveFailure.Recall(); }

    /// Returns when no callback of the channel runs on another thread. Call it after Leave().
    void WaitForCallbacks();

    CProxyDBusHelper& Channel() { return m_channel; }
    /// Identifies the session while it or a callback of its channel exists.
    void* Identity() const;
    std::optional<IPTVHandle> const& Handle() const { return m_handle; }
    /// Whether Leave() has begun.
    bool IsLeaving() const { return m_isLeaving; }

    /// Sets the calling thread's failure if the session is its reason: it leaves, or could not be connected.
    void ExplainFailure() const;

private:
    char const* const m_typeWord;
    std::optional<IPTVHandle> const m_handle;
    std::atomic<bool> m_isLeaving{false};
    KeptFailure m_connectFailure;
    KeptFailure m_leaveFailure;
    CProxyDBusHelper m_channel;
};

/// Whether the service runs; if not, it logs a line.
bool IsServiceRunning(SourceLocation const& where);

/// The only session of a proxy, or the reason why none could be made: threads that wait for an attempt share
/// both.
template <typename AnySession>
struct Sessions : Singleton<AnySession>
{
    KeptFailure failure;
};

/// Returns the session, and makes one if there is none or if its bus has died. Sets the calling thread's
/// failure if none could be made, or if it could not be connected.
template <typename AnySession, typename Make>
std::shared_ptr<AnySession> GetOrMakeSession(Sessions<AnySession>& sessions, Make make)
{
    auto const session = sessions.GetOrMake(
        [&] {
            auto made = make();
            if (made == nullptr) {
                sessions.failure.Keep();
            }
            return made;
        },
        [](AnySession const& present) { return present.IsOutdated(); },
        [](AnySession& outdated) { outdated.Leave(); });
    if (session == nullptr) {
        sessions.failure.Recall();
    } else {
        session->ExplainFailure();
    }
    return session;
}

/// Ends the session, if there is one, and returns when no callback of it or of an earlier session runs on
/// another thread. Sets the calling thread's failure, also if another thread ends the session at the same
/// time.
template <typename AnySession>
void EndSession(Singleton<AnySession>& sessions)
{
    std::shared_ptr<AnySession> last;
    for (auto const& ended : sessions.End([](AnySession& session) { session.Leave(); }, last)) {
        ended->WaitForCallbacks();
    }
    if (last != nullptr) {
        last->RecallLeaveFailure();
    }
}

/// Like EndSession(), but only for the session with this identity, and without a change to the failure of the
/// application's last call.
inline void EndLostSession(Singleton<Session>& sessions, void* identity)
{
    FailureUntouched const untouched;
    auto const ended =
        sessions.EndIf([](Session& session) { session.Leave(); },
                       [identity](Session const& session) { return session.Identity() == identity; });
    if (ended != nullptr) {
        ended->WaitForCallbacks();
    }
}

} // namespace zviptv
