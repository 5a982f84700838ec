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

    /// The bus has died under the channel, and is there again: the session is to be replaced.
    bool IsOutdated() const;

    /// Tells the helper bus, if the channel is still on it, that the channel goes away, then withdraws it.
    /// Until then it answers the service.
    void Leave();

    /// Sets the calling thread's failure to that of Leave(), if it failed.
    void ExplainLeaving() const { m_leaveFailure.Recall(); }

    /// Returns when no callback of the channel runs on another thread. After Leave().
    void WaitForCallbacks();

    CProxyDBusHelper& Channel() { return m_channel; }
    /// Identifies the session, for as long as it or a callback of its channel lives.
    void* Identity() const;
    std::optional<IPTVHandle> const& Handle() const { return m_handle; }
    /// Leave() has begun.
    bool IsLeaving() const { return m_isLeaving; }

    /// Sets the calling thread's failure where the session is the reason of it: it leaves, or could not be
    /// connected.
    void ExplainFailure() const;

private:
    char const* const m_typeWord;
    std::optional<IPTVHandle> const m_handle;
    std::atomic<bool> m_isLeaving{false};
    KeptFailure m_connectFailure;
    KeptFailure m_leaveFailure;
    CProxyDBusHelper m_channel;
};

/// Whether the service runs; a log line says when it does not.
bool IsServiceRunning(SourceLocation const& where);

/// The one session of a proxy, and why none could be made: threads that wait for an attempt share both.
template <typename AnySession>
struct Sessions : Singleton<AnySession>
{
    KeptFailure failure;
};

/// Returns the session; makes one if there is none or if its bus has died. Sets the calling thread's failure
/// if there is none, or one that could not be connected.
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

/// Ends the session, if there is one; returns when no callback of it or of an earlier one runs on another
/// thread. Sets the calling thread's failure, also where another thread ends the session meanwhile.
template <typename AnySession>
void EndSession(Singleton<AnySession>& sessions)
{
    std::shared_ptr<AnySession> last;
    for (auto const& ended : sessions.End([](AnySession& session) { session.Leave(); }, last)) {
        ended->WaitForCallbacks();
    }
    if (last != nullptr) {
        last->ExplainLeaving();
    }
}

/// As EndSession(), but only for the session with this identity, and the failure of the application's last
/// call stays.
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
