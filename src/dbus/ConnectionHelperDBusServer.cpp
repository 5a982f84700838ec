#include <zviptv/ConnectionHelperDBusServer.h>

#include "dbus/HelperMessage.h"
#include "dbus/Singleton.h"
#include "log/Log.h"

#include <zviptv/Protocol.h>

using zviptv::CallbackGate;
using zviptv::Error;
using zviptv::Owned;
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

CConnectionHelperDBusServer* CConnectionHelperDBusServer::m_pInstance = nullptr;
pthread_rwlock_t CConnectionHelperDBusServer::m_rwlock = PTHREAD_RWLOCK_INITIALIZER;

struct CConnectionHelperDBusServer::State
{
    struct Handler
    {
        std::string (*call)(std::string, std::string, std::string, void*) = nullptr;
        void* userData = nullptr;
    };

    Handler CurrentHandler()
    {
        std::lock_guard<std::mutex> const lock(m_guard);
        return m_SignalCb;
    }

    // Destroyed in reverse order: first the object is withdrawn, then the name released.
    Owned<GDBusNodeInfo> m_pNodeInfo;
    Owned<GDBusConnection> m_pServCon;
    zviptv::NameOwnership m_Owner;
    zviptv::ObjectRegistration m_Regist;
    std::mutex m_guard;
    Handler m_SignalCb;
    CallbackGate::Pointer m_gate;
};

CConnectionHelperDBusServer* CConnectionHelperDBusServer::Instance()
{
    ZV_LOG_ENTRY();
    return zviptv::GetOrCreateInstance(m_rwlock, m_pInstance,
                                       [] { m_pInstance = new CConnectionHelperDBusServer; });
}

void CConnectionHelperDBusServer::Destroy()
{
    zviptv::DestroyInstance(
        m_rwlock, m_pInstance, [](CConnectionHelperDBusServer& server) { return server.m_state->m_gate; },
        [](CConnectionHelperDBusServer* server) { delete server; });
}

CConnectionHelperDBusServer::CConnectionHelperDBusServer() : m_state(std::make_unique<State>())
{
    State& state = *m_state;
    state.m_gate = std::make_shared<CallbackGate>(this);
    ZV_LOG_INFO_LINE("XML parsed");
    Error error;
    state.m_pServCon.reset(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, error.Out()));
    if (error) {
        ZV_LOG_ERROR_LINE("Couldn't connect to DBus bus: '%s'\n", error.Message());
        return;
    }
    ZV_LOG_INFO_LINE("XML parsed 1");
    state.m_pNodeInfo.reset(g_dbus_node_info_new_for_xml(INTERFACE_XML, error.Out()));
    if (error) {
        ZV_LOG_ERROR_LINE("Parse InterfaceXML Failed: '%s'\n", error.Message());
        return;
    }
    ZV_LOG_INFO_LINE("XML parsed 2");
    if (!state.m_Regist.Begin(state.m_pServCon.get(), state.m_pNodeInfo->path, state.m_pNodeInfo.get(),
                              m_vtable, CallbackGate::NewToken(state.m_gate), CallbackGate::ReleaseToken,
                              error)) {
        ZV_LOG_ERROR_LINE("Couldn't register DBus bus : '%s'\n", error.Message());
        return;
    }
    ZV_LOG_INFO_LINE("XML parsed 3");
    if (zviptv::IsOpen(state.m_pServCon)) {
        state.m_Owner.Begin(g_bus_own_name_on_connection(state.m_pServCon.get(), CONNECTION_NAME,
                                                         G_BUS_NAME_OWNER_FLAGS_NONE, m_NameAcquired,
                                                         m_NameLost, nullptr, nullptr));
    }
    ZV_LOG_INFO_LINE("RegistID:%d, m_pServCon:0x%p", static_cast<int>(state.m_Regist.Id()),
                     static_cast<void*>(state.m_pServCon.get()));
    if (state.m_Owner.Id() == 0) {
        state.m_pNodeInfo.reset();
        ZV_LOG_ERROR_LINE("Bus Own Name Error");
    }
}

CConnectionHelperDBusServer::~CConnectionHelperDBusServer()
{
    m_state->m_gate->Refuse();
    m_state->m_gate->WaitForOthers();
}

void CConnectionHelperDBusServer::SetDbusSignalCb(std::string (*cb)(std::string, std::string, std::string,
                                                                    void*),
                                                  void* userData)
{
    std::lock_guard<std::mutex> const lock(m_state->m_guard);
    m_state->m_SignalCb = {cb, userData};
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
    CallbackGate::Visit<CConnectionHelperDBusServer> const server(CallbackGate::FromToken(userData));
    if (!server) {
        g_dbus_method_invocation_return_error_literal(
            owned.release(), G_DBUS_ERROR, G_DBUS_ERROR_UNKNOWN_OBJECT, "The helper bus has ended");
        return;
    }
    CMessageBuffer const request = helper::Decode(parameters);
    ZV_LOG_INFO_LINE("Received data : %s", request.GetValue(key::DBusName).c_str());
    std::string answer;
    State::Handler const handler = server->m_state->CurrentHandler();
    if (handler.call != nullptr) {
        answer = handler.call(request.GetValue(key::DBusName), request.GetValue(key::Type),
                              request.GetValue(key::Add), handler.userData);
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
