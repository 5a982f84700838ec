// SPDX-License-Identifier: MIT
#include "client/link/ServiceWatch.h"

#include "dbus/UserData.h"

#include <zviptv/ConnectionHelperDBusClient.h>

namespace zviptv::client {

namespace {

constexpr char BusInterface[] = "org.freedesktop.DBus";
constexpr char BusPath[] = "/org/freedesktop/DBus";

/// The callbacks may outlive the watch, and then do nothing.
template <class Reports>
using Token = UserData<std::weak_ptr<Reports const>>;

} // namespace

ServiceWatch::ServiceWatch(GDBusConnection* connection, Reports reports)
    : m_reports(std::make_shared<Reports const>(std::move(reports))),
      m_changes(
          connection,
          {BusInterface, BusInterface, "NameOwnerChanged", BusPath, CConnectionHelperDBusClient::BUSNAME},
          OnOwnerChanged, Token<Reports>::New(m_reports), Token<Reports>::Release),
      m_closed(connection, [weak = std::weak_ptr<Reports const>(m_reports)] {
          if (auto const alive = weak.lock()) {
              alive->closed();
          }
      })
{
    g_dbus_connection_call(connection, BusInterface, BusPath, BusInterface, "GetNameOwner",
                           g_variant_new("(s)", CConnectionHelperDBusClient::BUSNAME), G_VARIANT_TYPE("(s)"),
                           G_DBUS_CALL_FLAGS_NONE, -1, nullptr, OnOwnerAsked, Token<Reports>::New(m_reports));
}

void ServiceWatch::OnOwnerChanged(GDBusConnection* /*connection*/, char const* /*sender*/,
                                  char const* /*path*/, char const* /*interface*/, char const* /*signal*/,
                                  GVariant* parameters, void* data)
{
    std::shared_ptr<Reports const> const reports = Token<Reports>::Get(data).lock();
    if (reports != nullptr && g_variant_is_of_type(parameters, G_VARIANT_TYPE("(sss)")) != FALSE) {
        char const* owner = nullptr;
        g_variant_get_child(parameters, 2, "&s", &owner);
        reports->owned(owner);
    }
}

void ServiceWatch::OnOwnerAsked(GObject* source, GAsyncResult* result, void* data)
{
    std::shared_ptr<Reports const> const reports = Token<Reports>::Get(data).lock();
    Token<Reports>::Release(data);
    Owned<GVariant> const answer(g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
    if (reports != nullptr) {
        char const* owner = "";
        if (answer != nullptr) {
            g_variant_get(answer.get(), "(&s)", &owner);
        }
        reports->owned(owner);
    }
}

} // namespace zviptv::client
