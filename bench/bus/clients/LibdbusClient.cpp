#include "LibdbusBody.h"
#include "PlainClient.h"

#include <dbus/dbus.h>

namespace zviptv::bench {

namespace {

DBusConnection* Connect()
{
    DBusError error;
    dbus_error_init(&error);
    DBusConnection* const connection = dbus_bus_get(DBUS_BUS_SYSTEM, &error);
    if (connection == nullptr) {
        Fail("dbus_bus_get", error.message);
    }
    return connection;
}

void ReadEntries(DBusMessage* message, EntryReader& reader)
{
    ForEachEntry(message, [&reader](char const* key, std::string_view value) { reader.Take(key, value); });
    reader.Finish();
}

class LibdbusClient final : public PlainClient
{
public:
    explicit LibdbusClient(std::string const& service) : m_service(service), m_connection(Connect())
    {
        dbus_connection_add_filter(m_connection, OnMessage, this, nullptr);
    }

    ~LibdbusClient() override
    {
        dbus_connection_remove_filter(m_connection, OnMessage, this);
        dbus_connection_unref(m_connection);
    }

    void Dispatch() override { dbus_connection_read_write_dispatch(m_connection, -1); }

private:
    void Exchange(char const* path, Entries request, EntryReader& reader) override
    {
        DBusMessage* const call =
            dbus_message_new_method_call(m_service.c_str(), path, wire::Interface, wire::Method);
        AppendEntries(call, request);
        DBusError error;
        dbus_error_init(&error);
        DBusMessage* const answer =
            dbus_connection_send_with_reply_and_block(m_connection, call, wire::TimeoutMs, &error);
        dbus_message_unref(call);
        if (answer == nullptr) {
            Fail("dbus_connection_send_with_reply_and_block", error.message);
        }
        ReadEntries(answer, reader);
        dbus_message_unref(answer);
    }

    static DBusHandlerResult OnMessage(DBusConnection* /*connection*/, DBusMessage* message, void* self)
    {
        auto const* const client = static_cast<LibdbusClient*>(self);
        if (dbus_message_is_signal(message, wire::Interface, wire::Signal) == FALSE ||
            dbus_message_has_path(message, wire::SubscriberPath) == FALSE ||
            dbus_message_has_sender(message, client->m_service.c_str()) == FALSE) {
            return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
        }
        PesReader reader(client->m_receiver);
        ReadEntries(message, reader);
        return DBUS_HANDLER_RESULT_HANDLED;
    }

    std::string const m_service;
    DBusConnection* const m_connection;
};

} // namespace

std::unique_ptr<Client> NewClient(std::string const& service)
{
    return std::make_unique<LibdbusClient>(service);
}

} // namespace zviptv::bench
