#include "PlainClient.h"

#include <gio/gio.h>

namespace zviptv::bench {

namespace {

GVariant* Encode(std::initializer_list<wire::Entry> entries)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    for (wire::Entry const& entry : entries) {
        g_variant_builder_add(
            &builder, "{sv}", entry.key,
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, entry.value.data(), entry.value.size(), 1));
    }
    return g_variant_new("(a{sv})", &builder);
}

void Decode(GVariant* body, EntryReader& reader)
{
    GVariantIter* entries = nullptr;
    g_variant_get(body, "(a{sv})", &entries);
    char const* key = nullptr;
    GVariant* value = nullptr;
    while (g_variant_iter_next(entries, "{&sv}", &key, &value) != FALSE) {
        if (g_variant_is_of_type(value, G_VARIANT_TYPE_BYTESTRING) != FALSE) {
            gsize size = 0;
            auto const* const bytes = static_cast<char const*>(g_variant_get_fixed_array(value, &size, 1));
            reader.Take(key, std::string_view(bytes, size));
        }
        g_variant_unref(value);
    }
    g_variant_iter_free(entries);
    reader.Finish(); // the body still holds all values
}

GDBusConnection* Connect()
{
    GError* error = nullptr;
    GDBusConnection* const connection = g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, &error);
    if (connection == nullptr) {
        Fail("g_bus_get_sync", error->message);
    }
    return connection;
}

class GDBusClient final : public PlainClient
{
public:
    explicit GDBusClient(std::string const& service)
        : m_service(service), m_connection(Connect()),
          m_subscription(g_dbus_connection_signal_subscribe(
              m_connection, service.c_str(), wire::Interface, wire::Signal, wire::SubscriberPath, nullptr,
              G_DBUS_SIGNAL_FLAGS_NONE, OnSignal, this, nullptr))
    {
    }

    ~GDBusClient() override
    {
        g_dbus_connection_signal_unsubscribe(m_connection, m_subscription);
        g_object_unref(m_connection);
    }

    void Dispatch() override { g_main_context_iteration(nullptr, TRUE); }

private:
    void Exchange(char const* path, Entries request, EntryReader& reader) override
    {
        GError* error = nullptr;
        GVariant* const answer = g_dbus_connection_call_sync(
            m_connection, m_service.c_str(), path, wire::Interface, wire::Method, Encode(request),
            G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE, wire::TimeoutMs, nullptr, &error);
        if (answer == nullptr) {
            Fail("g_dbus_connection_call_sync", error->message);
        }
        Decode(answer, reader);
        g_variant_unref(answer);
    }

    static void OnSignal(GDBusConnection* /*connection*/, char const* /*sender*/, char const* /*path*/,
                         char const* /*interface*/, char const* /*signal*/, GVariant* body, void* self)
    {
        if (g_variant_is_of_type(body, G_VARIANT_TYPE("(a{sv})")) != FALSE) {
            PesReader reader(static_cast<GDBusClient*>(self)->m_receiver);
            Decode(body, reader);
        }
    }

    std::string const m_service;
    GDBusConnection* const m_connection;
    guint const m_subscription;
};

} // namespace

std::unique_ptr<Client> NewClient(std::string const& service)
{
    return std::make_unique<GDBusClient>(service);
}

} // namespace zviptv::bench
