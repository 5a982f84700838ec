// SPDX-License-Identifier: MIT
#include <zviptv/ConnectionHelperDBusServer.h>

#include "dbus/BusConnection.h"
#include "dbus/CallbackGate.h"
#include "dbus/HelperMessage.h"
#include "dbus/IncomingCall.h"
#include "dbus/NameOwnership.h"
#include "dbus/SendFailure.h"
#include "dbus/Singleton.h"
#include "failure/LastFailure.h"
#include "log/Log.h"

#include <zviptv/Protocol.h>

using zviptv::CallbackGate;
using zviptv::Error;
using zviptv::Owned;
using zviptv::SourceLocation;
using zviptv::WriteLog;
namespace helper = zviptv::helper;
namespace key = zviptv::protocol::key;

char const* const CConnectionHelperDBusServer::CONNECTION_NAME = helper::BusName;
char const* const CConnectionHelperDBusServer::INTERFACE_XML =
    "\t\t<node name='/org/corvel/zviptvapi/dbushelper'>\n"
    "\t\t\t<interface name='org.corvel.zviptvapi.dbushelper'>\n"
    "\t\t\t\t<method name='SendSignal'>\n"
    "\t\t\t\t<arg type='a(ss)' name='data' direction='in'/>\n"
    "\t\t\t\t<arg type='a(ss)' name='response' direction='out'/>\n"
    "\t\t\t\t</method>\n"
    "\t\t\t</interface>\n"
    "\t\t</node>";

GDBusInterfaceVTable const CConnectionHelperDBusServer::m_vtable = {
    CConnectionHelperDBusServer::m_MethodCallback, nullptr, nullptr, {}};

// The only object. It is never deleted, so that no pointer to it dangles.
CConnectionHelperDBusServer* CConnectionHelperDBusServer::m_pInstance = nullptr;
pthread_rwlock_t CConnectionHelperDBusServer::m_rwlock = PTHREAD_RWLOCK_INITIALIZER;

namespace {

/// A pthread_rwlock_t, taken for writing, for std::lock_guard.
struct WriteSide
{
    void lock() { pthread_rwlock_wrlock(&rwlock); }
    void unlock() { pthread_rwlock_unlock(&rwlock); }

    pthread_rwlock_t& rwlock;
};

/// The state from Instance() to Destroy(): the name and the object on the bus.
class Server : public std::enable_shared_from_this<Server>
{
public:
    Server() = default;
    /// Lets a handler that has begun but does not hold the server yet see that the server ends.
    ~Server()
    {
        m_gate->Refuse();
        m_gate->WaitForOthers();
    }
    Server(Server const&) = delete;
    Server& operator=(Server const&) = delete;

    struct Handler
    {
        std::string (*call)(std::string, std::string, std::string, void*) = nullptr;
        void* userData = nullptr;
    };

    void Start(SourceLocation const& where, GBusNameAcquiredCallback acquired, GBusNameLostCallback lost);

    /// Whether the bus has died and is available again.
    bool IsOutdated() const { return !zviptv::IsPresent(m_pServCon); }

    /// Removes the object, then releases the name. Does not wait for a running handler.
    void End()
    {
        m_gate->Refuse();
        m_Regist.End();
        m_Owner = zviptv::NameOwnership();
    }

    void WaitForHandlers() { m_gate->WaitForOthers(); }

    /// Why the server does not answer.
    zviptv::KeptFailure failure;

    void SetHandler(Handler handler)
    {
        std::lock_guard<std::mutex> const lock(m_guard);
        m_SignalCb = handler;
    }

    Handler CurrentHandler()
    {
        std::lock_guard<std::mutex> const lock(m_guard);
        return m_SignalCb;
    }

private:
    Owned<GDBusNodeInfo> m_pNodeInfo;
    Owned<GDBusConnection> m_pServCon;
    zviptv::NameOwnership m_Owner;
    zviptv::ObjectRegistration m_Regist;
    std::mutex m_guard;
    Handler m_SignalCb;
    CallbackGate::Pointer m_gate = std::make_shared<CallbackGate>(this);
};

void Server::Start(SourceLocation const& where, GBusNameAcquiredCallback acquired, GBusNameLostCallback lost)
{
    WriteLog(ZV_LOG_INFO, where, "XML parsed");
    Error error;
    m_pServCon = zviptv::SystemBus(error);
    if (error) {
        WriteLog(ZV_LOG_ERROR, where, "Couldn't connect to DBus bus: '%s'\n", error.Message());
        zviptv::SetConnectFailure(error);
        return;
    }
    WriteLog(ZV_LOG_INFO, where, "XML parsed 1");
    m_pNodeInfo.reset(g_dbus_node_info_new_for_xml(CConnectionHelperDBusServer::INTERFACE_XML, error.Out()));
    if (error) {
        WriteLog(ZV_LOG_ERROR, where, "Parse InterfaceXML Failed: '%s'\n", error.Message());
        return;
    }
    WriteLog(ZV_LOG_INFO, where, "XML parsed 2");
    if (!m_Regist.Begin(m_pServCon.get(), m_pNodeInfo->path, m_pNodeInfo.get(),
                        CConnectionHelperDBusServer::m_vtable, CallbackGate::NewToken(m_gate),
                        CallbackGate::ReleaseToken, error)) {
        WriteLog(ZV_LOG_ERROR, where, "Couldn't register DBus bus : '%s'\n", error.Message());
        zviptv::SetFailure(ZV_FAILURE_BUS_ERROR, {error.Message()});
        return;
    }
    WriteLog(ZV_LOG_INFO, where, "XML parsed 3");
    if (zviptv::IsOpen(m_pServCon)) {
        m_Owner = zviptv::NameOwnership(m_pServCon.get(), helper::BusName, acquired, lost);
    }
    WriteLog(ZV_LOG_INFO, where, "RegistID:%d, m_pServCon:0x%p", static_cast<int>(m_Regist.Id()),
             static_cast<void*>(m_pServCon.get()));
    if (!m_Owner) {
        m_pNodeInfo.reset();
        WriteLog(ZV_LOG_ERROR, where, "Bus Own Name Error");
        zviptv::SetFailure(ZV_FAILURE_NO_BUS, {"the bus has closed the connection; check that it runs"});
    }
}

} // namespace

struct CConnectionHelperDBusServer::State : zviptv::Singleton<Server>
{
};

CConnectionHelperDBusServer* CConnectionHelperDBusServer::Instance()
{
    zviptv::FailureScope const scope("Instance");
    ZV_LOG_ENTRY();
    Server::Handler handler; // that of the server whose bus has died
    auto const make = [&handler] {
        auto server = std::make_shared<Server>();
        server->SetHandler(handler);
        server->Start(SourceLocation::Here(__FILE__, "CConnectionHelperDBusServer"), m_NameAcquired,
                      m_NameLost);
        server->failure.Keep();
        return server;
    };
    WriteSide side{m_rwlock};
    {
        std::lock_guard<WriteSide> const lock(side);
        if (m_pInstance == nullptr) {
            m_pInstance = new CConnectionHelperDBusServer;
        }
    }
    auto const server = m_pInstance->m_state->GetOrMake(
        make, [](Server const& present) { return present.IsOutdated(); },
        [&handler](Server& outdated) {
            outdated.End();
            handler = outdated.CurrentHandler();
        });
    if (server == nullptr) {
        return nullptr;
    }
    server->failure.Recall();
    return m_pInstance;
}

void CConnectionHelperDBusServer::Destroy()
{
    zviptv::FailureScope const scope("Destroy");
    WriteSide side{m_rwlock};
    {
        std::lock_guard<WriteSide> const lock(side);
        if (m_pInstance == nullptr) {
            return;
        }
    }
    for (auto const& ended : m_pInstance->m_state->End([](Server& server) { server.End(); })) {
        ended->WaitForHandlers();
    }
}

CConnectionHelperDBusServer::CConnectionHelperDBusServer() : m_state(std::make_unique<State>()) {}

CConnectionHelperDBusServer::~CConnectionHelperDBusServer() = default;

void CConnectionHelperDBusServer::SetDbusSignalCb(std::string (*cb)(std::string, std::string, std::string,
                                                                    void*),
                                                  void* userData)
{
    zviptv::FailureScope const scope("SetDbusSignalCb");
    if (auto const server = m_state->Current()) {
        server->SetHandler({cb, userData});
    } else {
        ZV_LOG_ERROR_LINE("The object has been destroyed; create it again");
        zviptv::SetGone();
    }
}

void CConnectionHelperDBusServer::m_MethodCallback(GDBusConnection* connection, char const* sender,
                                                   char const* objectPath, char const* interfaceName,
                                                   char const* methodName, GVariant* parameters,
                                                   GDBusMethodInvocation* invocation, void* userData)
{
    Owned<GDBusMethodInvocation> owned(invocation);
    ZV_LOG_INFO_LINE("m_MethodCallback sender=%s obj_path=%s iface_name=%s method_name=%s", sender,
                     objectPath, interfaceName, methodName);
    if (connection == nullptr || userData == nullptr) {
        ZV_LOG_ERROR_LINE("Empty user_data or connection not valid.");
        return;
    }
    CallbackGate::Visit<Server> const server(CallbackGate::FromToken(userData));
    auto const held = server ? server->weak_from_this().lock() : nullptr;
    if (held == nullptr) {
        g_dbus_method_invocation_return_error_literal(
            owned.release(), G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT, "The helper bus has ended");
        return;
    }
    CMessageBuffer const request = helper::Decode(parameters);
    ZV_LOG_INFO_LINE("Received data : %s", request.GetValue(key::DBusName).c_str());
    std::string answer;
    Server::Handler const handler = held->CurrentHandler();
    if (handler.call != nullptr) {
        zviptv::IncomingScope scope("", owned.get()); // the announcement handler does not get the sender
        try {
            answer = handler.call(request.GetValue(key::DBusName), request.GetValue(key::Type),
                                  request.GetValue(key::Add), handler.userData);
        } catch (...) {
            scope.TakeInvocation(); // leaves the announcement unanswered
            throw;
        }
        if (scope.TakeInvocation() == nullptr) {
            return; // a CDeferredReply answers
        }
    }
    CMessageBuffer reply;
    reply.AddValue(key::DBusName, answer.c_str());
    Error error;
    GVariant* const body = helper::Encode(reply, error);
    if (body == nullptr) {
        ZV_LOG_ERROR_LINE("Error while sending reply [%d] %s", error.Code(), error.Message());
        g_dbus_method_invocation_return_error_literal(owned.release(), G_DBUS_ERROR, G_DBUS_ERROR_FAILED,
                                                      error.Message());
        return;
    }
    g_dbus_method_invocation_return_value(owned.release(), body);
}

void CConnectionHelperDBusServer::m_NameAcquired(GDBusConnection* /*connection*/, char const* name,
                                                 void* /*userData*/)
{
    ZV_LOG_DEBUG_LINE("Name acquired: %s", name);
}

void CConnectionHelperDBusServer::m_NameLost(GDBusConnection* /*connection*/, char const* name,
                                             void* /*userData*/)
{
    ZV_LOG_DEBUG_LINE("Name lost: %s", name);
}

CMessageBuffer CConnectionHelperDBusServer::m_ConvertMsg(GVariant* message)
{
    return helper::Decode(message);
}

GVariant* CConnectionHelperDBusServer::m_ConvertMsg(CMessageBuffer& message)
{
    Error error;
    return helper::Encode(message, error);
}
