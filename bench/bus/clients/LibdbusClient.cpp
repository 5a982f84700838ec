// SPDX-License-Identifier: MIT
#include "LibdbusBody.h"
#include "PlainClient.h"

#include <dbus/dbus.h>

namespace zviptv::bench {

namespace {

LibdbusOwned<DBusConnection> Connect()
{
    LibdbusError error;
    LibdbusOwned<DBusConnection> connection(dbus_bus_get(DBUS_BUS_SYSTEM, error.Out()));
    if (connection == nullptr) {
        Fail("dbus_bus_get", error.Text());
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
        dbus_connection_add_filter(m_connection.get(), OnMessage, this, nullptr);
    }

    ~LibdbusClient() override { dbus_connection_remove_filter(m_connection.get(), OnMessage, this); }

    void Dispatch() override { dbus_connection_read_write_dispatch(m_connection.get(), -1); }

private:
    void Exchange(char const* path, Entries request, EntryReader& reader) override
    {
        LibdbusOwned<DBusMessage> const call(
            dbus_message_new_method_call(m_service.c_str(), path, wire::Interface, wire::Method));
        AppendEntries(call.get(), request);
        LibdbusError error;
        LibdbusOwned<DBusMessage> const answer(dbus_connection_send_with_reply_and_block(
            m_connection.get(), call.get(), wire::TimeoutMs, error.Out()));
        if (answer == nullptr) {
            Fail("dbus_connection_send_with_reply_and_block", error.Text());
        }
        ReadEntries(answer.get(), reader);
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
    LibdbusOwned<DBusConnection> const m_connection;
};

} // namespace

std::unique_ptr<Client> NewClient(std::string const& service)
{
    return std::make_unique<LibdbusClient>(service);
}

} // namespace zviptv::bench
