// SPDX-License-Identifier: MIT
#include "dbus/NameOwnership.h"

#include "dbus/BusRequest.h"
#include "dbus/UserData.h"

#include <atomic>
#include <cstring>
#include <utility>

namespace zviptv {

class NameOwnership::Request
{
public:
    enum class State
    {
        Asked,    ///< the bus has not answered yet; signals refer to the end of an earlier ownership
        Owned,    ///< this connection owns the name
        NotOwned, ///< another connection owns it, and the bus has queued the request
        Over      ///< the bus has refused or ended, or the request has been withdrawn
    };

    Request(GDBusConnection* connection, std::string name, GBusNameAcquiredCallback acquired,
            GBusNameLostCallback lost)
        : m_connection(Share(connection)), m_name(std::move(name)), m_acquired(acquired), m_lost(lost)
    {
    }

    bool IsAnswered() const { return m_state != State::Asked; }

    /// Reports the state if it has changed.
    void Become(State next)
    {
        State former = m_state;
        do {
            if (former == next || former == State::Over) {
                return;
            }
        } while (!m_state.compare_exchange_weak(former, next));
        if (next == State::Owned) {
            m_acquired(m_connection.get(), m_name.c_str(), nullptr);
        } else if (former != State::NotOwned) {
            m_lost(IsOpen(m_connection) ? m_connection.get() : nullptr, m_name.c_str(), nullptr);
        }
    }

    void Withdraw()
    {
        if (m_state.exchange(State::Over) != State::Over) {
            SendToBus(m_connection.get(), "ReleaseName", g_variant_new("(s)", m_name.c_str()));
        }
    }

private:
    Owned<GDBusConnection> const m_connection;
    std::string const m_name;
    GBusNameAcquiredCallback const m_acquired;
    GBusNameLostCallback const m_lost;
    std::atomic<State> m_state{State::Asked};
};

NameOwnership::NameOwnership(GDBusConnection* connection, std::string const& name,
                             GBusNameAcquiredCallback acquired, GBusNameLostCallback lost)
    : m_request(std::make_shared<Request>(connection, name, acquired, lost)),
      m_changes(connection,
                {"org.freedesktop.DBus", "org.freedesktop.DBus", "", "/org/freedesktop/DBus", name, true},
                OnSignal, UserData<Pointer>::New(m_request), UserData<Pointer>::Release),
      m_closed(connection, [request = m_request] { request->Become(Request::State::Over); })
{
    guint32 const flags = G_BUS_NAME_OWNER_FLAGS_NONE;
    // No time-out: a bus that has stopped grants the name when it continues, and only its answer shows
    // whether this request got the name or the application owned it before.
    g_dbus_connection_call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "RequestName", g_variant_new("(su)", name.c_str(), flags),
                           G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, G_MAXINT, nullptr, OnAnswered,
                           UserData<Pointer>::New(m_request));
}

NameOwnership& NameOwnership::operator=(NameOwnership&& other) noexcept
{
    std::swap(m_request, other.m_request);
    std::swap(m_changes, other.m_changes);
    std::swap(m_closed, other.m_closed);
    return *this;
}

NameOwnership::~NameOwnership()
{
    if (m_request != nullptr) {
        m_request->Withdraw();
    }
}

void NameOwnership::OnAnswered(GObject* source, GAsyncResult* result, void* data)
{
    constexpr guint32 primaryOwner = 1;
    constexpr guint32 inQueue = 2;
    Pointer const request = UserData<Pointer>::Get(data);
    UserData<Pointer>::Release(data);
    guint32 answer = 0;
    if (Owned<GVariant> const body{
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr)}) {
        g_variant_get(body.get(), "(u)", &answer);
    }
    request->Become(answer == primaryOwner ? Request::State::Owned
                    : answer == inQueue    ? Request::State::NotOwned
                                           : Request::State::Over);
}

void NameOwnership::OnSignal(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                             char const* /*interface*/, char const* signal, GVariant* /*parameters*/,
                             void* data)
{
    Pointer const request = UserData<Pointer>::Get(data);
    if (!request->IsAnswered()) {
        return;
    }
    if (std::strcmp(signal, "NameAcquired") == 0) {
        request->Become(Request::State::Owned);
    } else if (std::strcmp(signal, "NameLost") == 0) {
        request->Become(Request::State::NotOwned);
    }
}

} // namespace zviptv
