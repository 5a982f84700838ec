// SPDX-License-Identifier: MIT
#include <zviptv/ConnectionHelperDBusClient.h>

#include "dbus/BusConnection.h"
#include "dbus/HelperMessage.h"
#include "dbus/OwnerQuestion.h"
#include "dbus/SendFailure.h"
#include "dbus/SyncCall.h"
#include "dbus/UserData.h"
#include "failure/LastFailure.h"
#include "log/Log.h"

#include <zviptv/Protocol.h>

using zviptv::Error;
using zviptv::FailureScope;
using zviptv::Owned;
namespace helper = zviptv::helper;
namespace key = zviptv::protocol::key;

namespace {

constexpr std::chrono::milliseconds Timeout{2000};

CMessageBuffer Announcement(std::string const& dbusname, std::string const& type, char const* add)
{
    CMessageBuffer announcement;
    announcement.AddValue(key::DBusName, dbusname.c_str());
    announcement.AddValue(key::Type, type.c_str());
    announcement.AddValue(key::Add, add);
    return announcement;
}

/// Logs why there is no answer, and sets the calling thread's failure.
void Explain(Error const& error, zviptv::SourceLocation const& where)
{
    // Only the code decides, whatever its domain.
    switch (error.Code()) {
    case G_DBUS_ERROR_SERVICE_UNKNOWN:
    case G_DBUS_ERROR_NAME_HAS_NO_OWNER:
        zviptv::WriteLog(ZV_LOG_ERROR, where, "G_DBUS_ERROR_NAME_HAS_NO_OWNER");
        break;
    case G_IO_ERROR_TIMED_OUT:
        zviptv::WriteLog(ZV_LOG_ERROR, where, "G_IO_ERROR_TIMED_OUT");
        break;
    default:
        zviptv::WriteLog(ZV_LOG_ERROR, where, "Error : %d, %s", error.Code(), error.Message());
    }
    zviptv::SetSendFailure(error, "the announcement");
}

/// Sets the calling thread's failure if the answer has another type than it should.
void CheckType(GVariant* answer)
{
    if (g_variant_is_of_type(answer, G_VARIANT_TYPE("(a(ss))")) == FALSE) {
        zviptv::SetFailure(ZV_FAILURE_MALFORMED_REPLY,
                           {"the answer to the announcement is malformed: expected the type (a(ss)), got ",
                            g_variant_get_type_string(answer)});
    }
}

/// What waits for the answer to an announcement. GIO's callback owns it.
struct Waiting
{
    void (*completion)(std::string const& partner, void* userData);
    void* userData;
};
using WaitingData = zviptv::UserData<Waiting>;

void OnAnnounced(GObject* source, GAsyncResult* result, void* userData)
{
    Waiting const waiting = WaitingData::Get(userData);
    WaitingData::Release(userData);
    zviptv::FailureUntouched const untouched;
    std::string partner;
    {
        FailureScope const scope("ConnectAsync");
        Error error;
        Owned<GVariant> const answer(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, error.Out()));
        if (answer != nullptr) {
            CheckType(answer.get());
            partner = helper::Decode(answer.get()).GetValue(key::DBusName);
        } else if (!error.Is(G_IO_ERROR_CANCELLED)) {
            Explain(error, ZV_LOG_HERE);
        }
    }
    waiting.completion(partner, waiting.userData);
}

} // namespace

char const* const CConnectionHelperDBusClient::BUSNAME = helper::BusName;
char const* const CConnectionHelperDBusClient::METHOD = helper::Method;

CConnectionHelperDBusClient::CConnectionHelperDBusClient()
{
    FailureScope const scope("CConnectionHelperDBusClient");
    ZV_LOG_INFO_LINE("ctor");
    Error error;
    Owned<GDBusConnection> connection = zviptv::SystemBus(error);
    if (error) {
        ZV_LOG_ERROR_LINE("Error while connecting to system bus [%d] %s\n", error.Code(), error.Message());
        zviptv::SetConnectFailure(error);
        return;
    }
    m_pConnection = std::move(connection);
}

CConnectionHelperDBusClient::CConnectionHelperDBusClient(GDBusConnection* connection)
    : m_pConnection(zviptv::Share(connection))
{
    ZV_LOG_INFO_LINE("ctor");
}

CConnectionHelperDBusClient::~CConnectionHelperDBusClient()
{
    ZV_LOG_INFO_LINE("dtor");
}

bool CConnectionHelperDBusClient::CheckConnection()
{
    using zviptv::OwnerQuestion;
    FailureScope const scope("CheckConnection");
    OwnerQuestion::Answer const answer = OwnerQuestion::Ask();
    if (answer == OwnerQuestion::Answer::Failed) {
        // The log line never contains the bus's message.
        ZV_LOG_ERROR_LINE("[TCIPCConnection::%s] DBus Error while checking name owner: %s", "CheckConnection",
                          "(null)");
    }
    return answer == OwnerQuestion::Answer::Owned;
}

std::string CConnectionHelperDBusClient::Connect(std::string dbusname, std::string type)
{
    FailureScope const scope("Connect");
    CMessageBuffer request = Announcement(dbusname, type, "y");
    CMessageBuffer reply;
    m_SendMessage(request, reply);
    return reply.GetValue(key::DBusName);
}

bool CConnectionHelperDBusClient::ConnectAsync(std::string dbusname, std::string type,
                                               GCancellable* cancellable,
                                               void (*completion)(std::string const& partner, void* userData),
                                               void* userData)
{
    FailureScope const scope("ConnectAsync");
    if (m_pConnection == nullptr) {
        zviptv::SetFailure(ZV_FAILURE_NO_BUS, {"there is no connection to the bus"});
        return false;
    }
    Error error;
    GVariant* const body = helper::Encode(Announcement(dbusname, type, "y"), error);
    if (body == nullptr) {
        Explain(error, ZV_LOG_HERE);
        return false;
    }
    g_dbus_connection_call(m_pConnection.get(), BUSNAME, helper::ObjectPath, helper::Interface, METHOD, body,
                           nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, Timeout.count(), cancellable,
                           OnAnnounced, WaitingData::New({completion, userData}));
    return true;
}

void CConnectionHelperDBusClient::Disconnect(std::string dbusname, std::string type)
{
    FailureScope const scope("Disconnect");
    CMessageBuffer request = Announcement(dbusname, type, "n");
    CMessageBuffer reply;
    m_SendMessage(request, reply);
}

bool CConnectionHelperDBusClient::m_SendMessage(CMessageBuffer& request, CMessageBuffer& reply)
{
    FailureScope const scope("m_SendMessage");
    ZV_LOG_INFO_LINE("Sending");
    if (m_pConnection == nullptr) {
        ZV_LOG_ERROR_LINE("No connection setup");
        zviptv::SetFailureUnlessSet(ZV_FAILURE_NO_BUS, {"there is no connection to the bus"});
        return false;
    }
    Error error;
    Owned<GVariant> result;
    Owned<GVariant> const body(helper::Encode(request, error));
    if (body != nullptr) {
        g_variant_ref_sink(body.get());
    }
    if (body != nullptr) {
        result = zviptv::CallAndWait(
            m_pConnection.get(),
            {BUSNAME, helper::ObjectPath, helper::Interface, METHOD, G_DBUS_MESSAGE_FLAGS_NO_AUTO_START},
            body.get(), Timeout, error);
    }
    if (error) {
        Explain(error, ZV_LOG_HERE);
        return false;
    }
    CheckType(result.get());
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
