// SPDX-License-Identifier: MIT
#include "PlainClient.h"
#include "glib/Owned.h"

namespace zviptv::bench {

namespace {

GVariant* NewEntry(wire::Entry const& entry)
{
    GVariant* const bytes =
        g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, entry.value.data(), entry.value.size(), 1);
    return g_variant_new_dict_entry(g_variant_new_string(entry.key), g_variant_new_variant(bytes));
}

/// Uses no format strings, which GLib would parse for each entry.
GVariant* Encode(std::initializer_list<wire::Entry> entries)
{
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a{sv}"));
    for (wire::Entry const& entry : entries) {
        g_variant_builder_add_value(&builder, NewEntry(entry));
    }
    GVariant* array = g_variant_builder_end(&builder);
    return g_variant_new_tuple(&array, 1);
}

void DecodeEntry(GVariant* entry, EntryReader& reader)
{
    zviptv::Owned<GVariant> const key(g_variant_get_child_value(entry, 0));
    zviptv::Owned<GVariant> const boxed(g_variant_get_child_value(entry, 1));
    zviptv::Owned<GVariant> const value(g_variant_get_variant(boxed.get()));
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BYTESTRING) != FALSE) {
        gsize size = 0;
        auto const* const bytes = static_cast<char const*>(g_variant_get_fixed_array(value.get(), &size, 1));
        reader.Take(g_variant_get_string(key.get(), nullptr), std::string_view(bytes, size));
    }
}

void Decode(GVariant* body, EntryReader& reader)
{
    zviptv::Owned<GVariant> const entries(g_variant_get_child_value(body, 0));
    gsize const count = g_variant_n_children(entries.get());
    for (gsize i = 0; i < count; ++i) {
        zviptv::Owned<GVariant> const entry(g_variant_get_child_value(entries.get(), i));
        DecodeEntry(entry.get(), reader);
    }
    reader.Finish(); // the body still owns all values
}

zviptv::Owned<GDBusConnection> Connect()
{
    zviptv::Error error;
    zviptv::Owned<GDBusConnection> connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (connection == nullptr) {
        Fail("g_bus_get_sync", error.Message());
    }
    return connection;
}

class GDBusClient final : public PlainClient
{
public:
    explicit GDBusClient(std::string const& service)
        : m_service(service), m_connection(Connect()),
          m_subscription(g_dbus_connection_signal_subscribe(
              m_connection.get(), service.c_str(), wire::Interface, wire::Signal, wire::SubscriberPath,
              nullptr, G_DBUS_SIGNAL_FLAGS_NONE, OnSignal, this, nullptr))
    {
    }

    ~GDBusClient() override { g_dbus_connection_signal_unsubscribe(m_connection.get(), m_subscription); }

    void Dispatch() override { g_main_context_iteration(nullptr, TRUE); }

private:
    void Exchange(char const* path, Entries request, EntryReader& reader) override
    {
        zviptv::Error error;
        zviptv::Owned<GVariant> const answer(g_dbus_connection_call_sync(
            m_connection.get(), m_service.c_str(), path, wire::Interface, wire::Method, Encode(request),
            G_VARIANT_TYPE("(a{sv})"), G_DBUS_CALL_FLAGS_NONE, wire::TimeoutMs, nullptr, error.Out()));
        if (answer == nullptr) {
            Fail("g_dbus_connection_call_sync", error.Message());
        }
        Decode(answer.get(), reader);
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
    zviptv::Owned<GDBusConnection> const m_connection;
    guint const m_subscription;
};

} // namespace

std::unique_ptr<Client> NewClient(std::string const& service)
{
    return std::make_unique<GDBusClient>(service);
}

} // namespace zviptv::bench
