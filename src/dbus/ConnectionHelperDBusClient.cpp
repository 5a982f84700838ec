#include <zviptv/ConnectionHelperDBusClient.h>

#include "dbus/HelperMessage.h"
#include "log/Log.h"

#include <zviptv/Protocol.h>

#include <dbus/dbus.h>

using zviptv::Error;
using zviptv::Owned;
namespace helper = zviptv::helper;
namespace key = zviptv::protocol::key;

namespace {

constexpr int TimeoutMs = 2000;

struct DBusRelease
{
    void operator()(DBusConnection* connection) const { dbus_connection_unref(connection); }
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};

/// Whether the helper bus has an owner. libdbus's own question waits for 25 s on a bus that stands still.
bool NameHasOwner(DBusConnection* connection, DBusError& error)
{
    char const* const name = helper::BusName;
    std::unique_ptr<DBusMessage, DBusRelease> const question(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "NameHasOwner"));
    if (question == nullptr ||
        dbus_message_append_args(question.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID) == FALSE) {
        dbus_set_error_const(&error, DBUS_ERROR_NO_MEMORY, nullptr);
        return false;
    }
    std::unique_ptr<DBusMessage, DBusRelease> const answer(
        dbus_connection_send_with_reply_and_block(connection, question.get(), TimeoutMs, &error));
    dbus_bool_t owned = FALSE;
    return answer != nullptr &&
           dbus_message_get_args(answer.get(), &error, DBUS_TYPE_BOOLEAN, &owned, DBUS_TYPE_INVALID) !=
               FALSE &&
           owned != FALSE;
}

CMessageBuffer Announcement(std::string const& dbusname, std::string const& type, char const* add)
{
    CMessageBuffer announcement;
    announcement.AddValue(key::DBusName, dbusname.c_str());
    announcement.AddValue(key::Type, type.c_str());
    announcement.AddValue(key::Add, add);
    return announcement;
}

} // namespace

char const* const CConnectionHelperDBusClient::BUSNAME = helper::BusName;
char const* const CConnectionHelperDBusClient::METHOD = helper::Method;

CConnectionHelperDBusClient::CConnectionHelperDBusClient()
{
    ZV_LOG_INFO_LINE("ctor");
    Error error;
    Owned<GDBusConnection> connection(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (error) {
        ZV_LOG_ERROR_LINE("Error while connecting to system bus [%d] %s\n", error.Code(), error.Message());
        return;
    }
    m_pConnection = std::move(connection);
}

CConnectionHelperDBusClient::~CConnectionHelperDBusClient()
{
    ZV_LOG_INFO_LINE("dtor");
}

bool CConnectionHelperDBusClient::CheckConnection()
{
    std::unique_ptr<DBusConnection, DBusRelease> connection(dbus_bus_get(DBUS_BUS_SYSTEM, nullptr));
    DBusError error;
    dbus_error_init(&error);
    bool owned = false;
    if (connection != nullptr) {
        owned = NameHasOwner(connection.get(), error);
    } else {
        dbus_set_error_const(&error, DBUS_ERROR_NO_SERVER, "the system bus cannot be reached");
    }
    connection.reset();
    if (dbus_error_is_set(&error) != FALSE) {
        dbus_error_free(&error); // before the line below, which therefore shows no message
        ZV_LOG_ERROR_LINE("[TCIPCConnection::%s] DBus Error while checking name owner: %s", "CheckConnection",
                          error.message);
    }
    return owned;
}

std::string CConnectionHelperDBusClient::Connect(std::string dbusname, std::string type)
{
    CMessageBuffer request = Announcement(dbusname, type, "y");
    CMessageBuffer reply;
    m_SendMessage(request, reply);
    return reply.GetValue(key::DBusName);
}

void CConnectionHelperDBusClient::Disconnect(std::string dbusname, std::string type)
{
    CMessageBuffer request = Announcement(dbusname, type, "n");
    CMessageBuffer reply;
    m_SendMessage(request, reply);
}

bool CConnectionHelperDBusClient::m_SendMessage(CMessageBuffer& request, CMessageBuffer& reply)
{
    ZV_LOG_INFO_LINE("Sending");
    if (m_pConnection == nullptr) {
        ZV_LOG_ERROR_LINE("No connection setup");
        return false;
    }
    Error error;
    Owned<GVariant> result;
    if (GVariant* const body = helper::Encode(request, error)) {
        result.reset(g_dbus_connection_call_sync(
            m_pConnection.get(), BUSNAME, helper::ObjectPath, helper::Interface, METHOD, body, nullptr,
            G_DBUS_CALL_FLAGS_NO_AUTO_START, TimeoutMs, nullptr, error.Out()));
    }
    if (error) {
        // The code alone decides, whatever its domain.
        switch (error.Code()) {
        case G_DBUS_ERROR_SERVICE_UNKNOWN:
        case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
            ZV_LOG_ERROR_LINE("G_DBUS_ERROR_NAME_HAS_NO_OWNER");
            break;
        case G_IO_ERROR_TIMED_OUT:
            ZV_LOG_ERROR_LINE("G_IO_ERROR_TIMED_OUT");
            break;
        default:
            ZV_LOG_ERROR_LINE("Error : %d, %s", error.Code(), error.Message());
        }
        return false;
    }
    reply = m_ConvertMsg(result.get());
    ZV_LOG_INFO_LINE("SendDone");
    return true;
}

CMessageBuffer CConnectionHelperDBusClient::m_ConvertMsg(GVariant* message)
{
    return helper::Decode(message);
}

GVariant* CConnectionHelperDBusClient::m_ConvertMsg(CMessageBuffer& message)
{
    Error error;
    return helper::Encode(message, error);
}
