// SPDX-License-Identifier: MIT
#include "dbus/PartnerWatch.h"

#include "dbus/UserData.h"

#include <atomic>
#include <utility>

namespace zviptv {

struct PartnerWatch::Watched
{
    Watched(GDBusConnection* bus, std::string watchedName, GBusNameVanishedCallback callback, void* data,
            GDestroyNotify releaseData)
        : connection(Share(bus)), name(std::move(watchedName)), vanished(callback), userData(data),
          release(releaseData)
    {
    }
    ~Watched() { release(userData); }
    Watched(Watched const&) = delete;
    Watched& operator=(Watched const&) = delete;

    /// `bus` is null if the connection has closed.
    void Report(GDBusConnection* bus)
    {
        if (!isOver.exchange(true)) {
            vanished(bus, name.c_str(), userData);
        }
    }

    Owned<GDBusConnection> const connection;
    std::string const name;
    GBusNameVanishedCallback const vanished;
    void* const userData;
    GDestroyNotify const release;
    std::atomic<bool> isOver{false};
};

PartnerWatch::PartnerWatch(GDBusConnection* connection, std::string const& name,
                           GBusNameVanishedCallback vanished, void* userData, GDestroyNotify release)
    : m_watched(std::make_shared<Watched>(connection, name, vanished, userData, release)),
      m_changes(
          connection,
          {"org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", "/org/freedesktop/DBus", name},
          OnOwnerChanged, UserData<Pointer>::New(m_watched), UserData<Pointer>::Release),
      m_closed(connection, [watched = m_watched] { watched->Report(nullptr); })
{
    g_dbus_connection_call(connection, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                           "org.freedesktop.DBus", "GetNameOwner", g_variant_new("(s)", name.c_str()),
                           G_VARIANT_TYPE("(s)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, OnOwnerAsked,
                           UserData<Pointer>::New(m_watched));
}

PartnerWatch& PartnerWatch::operator=(PartnerWatch&& other) noexcept
{
    std::swap(m_watched, other.m_watched);
    std::swap(m_changes, other.m_changes);
    std::swap(m_closed, other.m_closed);
    return *this;
}

PartnerWatch::~PartnerWatch()
{
    if (m_watched != nullptr) {
        m_watched->isOver = true;
    }
}

void PartnerWatch::OnOwnerChanged(GDBusConnection* connection, char const* /*sender*/, char const* /*path*/,
                                  char const* /*interface*/, char const* /*signal*/, GVariant* parameters,
                                  void* data)
{
    Pointer const watched = UserData<Pointer>::Get(data);
    if (g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sss)")) != FALSE) {
        char const* former = nullptr;
        char const* owner = nullptr;
        g_variant_get_child(parameters, 1, "&s", &former);
        g_variant_get_child(parameters, 2, "&s", &owner);
        if (*former != '\0' || *owner == '\0') { // a new owner does not know the state of the previous one
            watched->Report(connection);
        }
    }
}

void PartnerWatch::OnOwnerAsked(GObject* source, GAsyncResult* result, void* data)
{
    Pointer const watched = UserData<Pointer>::Get(data);
    UserData<Pointer>::Release(data);
    GDBusConnection* const connection = G_DBUS_CONNECTION(source);
    Owned<GVariant> const owner(g_dbus_connection_call_finish(connection, result, nullptr));
    if (owner == nullptr) {
        watched->Report(IsOpen(watched->connection) ? connection : nullptr);
    }
}

} // namespace zviptv
