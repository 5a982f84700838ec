#include "Question.h"

#include <zviptv/Protocol.h>
#include <zviptv/ProxyDBusHelper.h>

#include <gio/gio.h>

#include <utility>

namespace zviptv::sim {

namespace {

/// An error that the application itself has sent is an answer.
bool IsFromBus(GError const* error)
{
    return error->domain != G_DBUS_ERROR || error->code == G_DBUS_ERROR_NO_REPLY ||
           error->code == G_DBUS_ERROR_SERVICE_UNKNOWN || error->code == G_DBUS_ERROR_NAME_HAS_NO_OWNER ||
           error->code == G_DBUS_ERROR_LIMITS_EXCEEDED || error->code == G_DBUS_ERROR_DISCONNECTED;
}

} // namespace

Question::Question(std::string busName)
    : m_busName(std::move(busName)),
      m_connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr),
                   [](GDBusConnection* connection) { g_clear_object(&connection); }),
      m_cancellable(g_cancellable_new(), g_object_unref)
{
}

Question::~Question() = default;

bool Question::Ask()
{
    if (m_connection == nullptr) {
        return false;
    }
    std::string const path =
        std::string(CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_NAME) + "/" + protocol::type::DataSubscriber;
    GError* raw = nullptr;
    GVariant* const answer = g_dbus_connection_call_sync(
        m_connection.get(), m_busName.c_str(), path.c_str(), CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE,
        CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD, g_variant_new_parsed("(@a{sv} {},)"), nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, G_MAXINT, m_cancellable.get(), &raw);
    std::unique_ptr<GError, decltype(&g_error_free)> const error(raw, g_error_free);
    std::unique_ptr<GVariant, decltype(&g_variant_unref)> const owned(answer, g_variant_unref);
    return error == nullptr || !IsFromBus(error.get());
}

void Question::Cancel()
{
    g_cancellable_cancel(m_cancellable.get());
}

} // namespace zviptv::sim
