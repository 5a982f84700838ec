// SPDX-License-Identifier: MIT
#include <zviptv/ProxyDBusHelper.h>

#include "dbus/BusConnection.h"
#include "dbus/FreeDescriptors.h"
#include "dbus/PeerChannelState.h"
#include "dbus/SendFailure.h"
#include "failure/LastFailure.h"
#include "log/Log.h"

#include <utility>

using zviptv::CallbackGate;
using zviptv::Error;
using zviptv::Owned;

char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_PREFIX = "org.corvel.zviptvapi";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_NAME = "/org/corvel/zviptvapi/DbusCommunication";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_IFACE = "org.corvel.zviptvapi.DbusCommunication";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_METHOD = "Send";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_SIG_NAME = "SendSignal";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_SYN_SUFFIX = "_SYN";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_SYNACK_SUFFIX = "_SYN_ACK";
char const* const CProxyDBusHelper::PROXY_DBUS_HELPER_ACK_SUFFIX = "_ACK";

// SendSignal is sent as a signal, although it is declared as a method here: services rely on this text.
char const* const CProxyDBusHelper::INTERFACE_XML =
    "<node>"
    "  <interface name='org.corvel.zviptvapi.DbusCommunication'>"
    "    <method name='Send'>"
    "      <arg type='a{sv}' name='data' direction='in'/>"
    "      <arg type='a{sv}' name='response' direction='out'/>"
    "    </method>"
    "    <method name='SendSignal'>"
    "      <arg type='a{sv}' name='data' direction='in'/>"
    "    </method>"
    "  </interface>"
    "</node>";

GDBusInterfaceVTable const CProxyDBusHelper::m_vtable = {
    CProxyDBusHelper::m_MethodCallback, nullptr, nullptr, {}};

namespace {

// The channel has a separate watch and subscription: the proxy needs no properties, signals or match rules.
// The bus must not start a partner, which would take up to 25 s.
constexpr auto PartnerProxyFlags = static_cast<GDBusProxyFlags>(
    G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES | G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS |
    G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START | G_DBUS_PROXY_FLAGS_NO_MATCH_RULE);

} // namespace

CProxyDBusHelper::CProxyDBusHelper(std::string name) : m_state(std::make_unique<State>(this))
{
    zviptv::ChannelAccess::Begin(*this, std::move(name), zviptv::SystemBus);
}

CProxyDBusHelper::CProxyDBusHelper(std::string name, GDBusConnection* connection)
    : m_state(std::make_unique<State>(this))
{
    zviptv::ChannelAccess::Begin(*this, std::move(name), [connection](Error& error) {
        if (connection == nullptr) {
            error.Set(G_IO_ERROR_NOT_CONNECTED, "No connection was given");
        }
        return zviptv::Share(connection);
    });
}

void zviptv::ChannelAccess::Begin(CProxyDBusHelper& channel, std::string name,
                                  std::function<Owned<GDBusConnection>(Error&)> const& connect)
{
    FailureScope const scope("CProxyDBusHelper");
    SourceLocation const where = SourceLocation::Here(__FILE__, "CProxyDBusHelper");
    CProxyDBusHelper::State& state = *channel.m_state;
    state.m_name = std::move(name);
    WriteLog(ZV_LOG_INFO, where, "Constructor - %s", state.m_name.c_str());
    state.m_node_info.reset(g_dbus_node_info_new_for_xml(CProxyDBusHelper::INTERFACE_XML, nullptr));
    WriteLog(ZV_LOG_INFO, where, "XML parsed");
    state.m_object_name = std::string(CProxyDBusHelper::PROXY_DBUS_HELPER_OBJ_NAME) + "/" + state.m_name;
    WriteLog(ZV_LOG_INFO, where, "Getting connection to DBUS");
    Error error;
    state.m_connection = connect(error);
    if (error) {
        WriteLog(ZV_LOG_ERROR, where, "Error while connecting to system bus [%d] %s\n", error.Code(),
                 error.Message());
        SetConnectFailure(error);
        return;
    }
    char const* const uniqueName = g_dbus_connection_get_unique_name(state.m_connection.get());
    state.m_unique_name = uniqueName == nullptr ? "" : uniqueName;
    WriteLog(ZV_LOG_INFO, where, "Working with unique name %s", state.m_unique_name.c_str());
    WriteLog(ZV_LOG_INFO, where, "Registering Object and Interface on path %s", state.m_object_name.c_str());
    if (!IsObjectPath(state.m_object_name)) {
        error.Set(G_IO_ERROR_INVALID_ARGUMENT, "The channel's name makes no object path that the bus takes");
    } else {
        state.m_registration.Begin(state.m_connection.get(), state.m_object_name.c_str(),
                                   state.m_node_info.get(), CProxyDBusHelper::m_vtable,
                                   CallbackGate::NewToken(state.m_gate), CallbackGate::ReleaseToken, error);
    }
    if (error) {
        WriteLog(ZV_LOG_ERROR, where, "Error while registering object [%d] %s", error.Code(),
                 error.Message());
    }
}

CProxyDBusHelper::~CProxyDBusHelper()
{
    zviptv::ChannelAccess::Withdraw(*this);
    m_state->m_gate->WaitForOthers();
    m_Disconnect(); // in case Connect has run meanwhile
}

void zviptv::ChannelAccess::Withdraw(CProxyDBusHelper& channel)
{
    CProxyDBusHelper::State& state = *channel.m_state;
    if (std::exchange(state.m_is_withdrawn, true)) {
        return;
    }
    SourceLocation const where = SourceLocation::Here(__FILE__, "~CProxyDBusHelper");
    WriteLogEntry(where, ZV_LOG_ERROR);
    state.m_gate->Refuse();
    channel.m_Disconnect();
    if (!state.m_registration.End()) {
        WriteLog(ZV_LOG_ERROR, where, "Assertion failed");
    }
}

int CProxyDBusHelper::Connect(std::string partner)
{
    zviptv::FailureScope const scope("Connect");
    ZV_LOG_ENTRY();
    // The partner may be lost at once, and the handler, on another thread, may end the channel.
    CallbackGate::Visit<CProxyDBusHelper> const stay(m_state->m_gate);
    if (!stay) {
        zviptv::SetGone();
        return 0;
    }
    {
        std::lock_guard<std::mutex> const lock(m_state->m_guard);
        m_state->m_partner_name = std::move(partner);
    }
    if (m_CreatePartnerProxy() == 0) {
        return 0;
    }
    ZV_LOG_INFO_LINE("handshake done");
    return 1;
}

int CProxyDBusHelper::m_CreatePartnerProxy()
{
    State& state = *m_state;
    std::string const partner = state.CurrentLink().partner;
    ZV_LOG_INFO_LINE("Monitor partner [%s] connection ", partner.c_str());
    guint watch = 0;
    if (zviptv::IsOpen(state.m_connection) && zviptv::IsBusName(partner)) {
        // With the guard held: a loss that another thread handles at once must find the watch.
        std::lock_guard<std::mutex> const lock(state.m_guard);
        state.m_watcher =
            zviptv::PartnerWatch(state.m_connection.get(), partner, m_PartnerNameVanishedCallback,
                                 CallbackGate::NewToken(state.m_gate), CallbackGate::ReleaseToken);
        watch = state.m_watcher.Id();
    }
    if (watch == 0) {
        ZV_LOG_ERROR_LINE("Error while g_dbus_proxy_new_sync");
        if (zviptv::IsOpen(state.m_connection)) {
            zviptv::SetFailureUnlessSet(ZV_FAILURE_INVALID_ARGUMENT, {"the partner's name is no bus name"});
        } else {
            zviptv::SetNoBus();
        }
        return 0;
    }

    Error error;
    zviptv::SignalSubscription subscription;
    Owned<GDBusProxy> proxy;
    if (!zviptv::IsObjectPath(state.m_object_name)) {
        error.Set(G_IO_ERROR_INVALID_ARGUMENT, "The channel's name makes no object path that the bus takes");
    } else if (!zviptv::IsOpen(state.m_connection)) {
        error.Set(G_IO_ERROR_CLOSED, "The connection is closed");
    } else if (zviptv::HaveFreeDescriptors(zviptv::DescriptorsOfAProxy, error)) {
        // The subscription is made first, so that no signal is missed after the proxy has queried the owner
        // of a well-known name.
        subscription = zviptv::SignalSubscription(
            state.m_connection.get(), {partner, PROXY_DBUS_HELPER_OBJ_IFACE, "", state.m_object_name, ""},
            m_SignalCallback, CallbackGate::NewToken(state.m_gate), CallbackGate::ReleaseToken);
        proxy.reset(g_dbus_proxy_new_sync(state.m_connection.get(), PartnerProxyFlags, nullptr,
                                          partner.c_str(), state.m_object_name.c_str(),
                                          PROXY_DBUS_HELPER_OBJ_IFACE, nullptr, error.Out()));
    }
    if (error) {
        ZV_LOG_ERROR_LINE("Error while registering proxy  %s", error.Message());
        zviptv::SetSendFailure(error, "the channel's name");
        m_Disconnect();
        return 0;
    }
    ZV_LOG_DEBUG_LINE("Create proxy[%p] and watch[%d] for %s on obj %s", static_cast<void*>(proxy.get()),
                      static_cast<int>(watch), partner.c_str(), state.m_object_name.c_str());

    if (subscription.Id() == 0) {
        ZV_LOG_ERROR_LINE("Error while g_dbus_connection_signal_subscribe");
        zviptv::SetNoBus();
        m_Disconnect();
        return 0;
    }
    ZV_LOG_INFO_LINE("Subscribe for signals from %s on object %s.", partner.c_str(),
                     state.m_object_name.c_str());

    std::lock_guard<std::mutex> const lock(state.m_guard);
    if (state.m_partner_name != partner) {
        zviptv::SetFailure(ZV_FAILURE_NO_SERVICE, {"the partner has left the bus"});
        return 0; // lost meanwhile; the thread that iterates the context has handled it
    }
    state.m_partner_proxy = std::move(proxy);
    state.m_subscription = std::move(subscription);
    state.m_connection_ready = 1;
    return 1;
}

void CProxyDBusHelper::m_Disconnect()
{
    // Released after the guard, in reverse order.
    zviptv::SignalSubscription subscription;
    Owned<GDBusProxy> proxy;
    zviptv::PartnerWatch watcher;
    {
        std::lock_guard<std::mutex> const lock(m_state->m_guard);
        m_state->m_connection_ready = 0;
        std::swap(watcher, m_state->m_watcher);
        std::swap(proxy, m_state->m_partner_proxy);
        std::swap(subscription, m_state->m_subscription);
    }
}

void CProxyDBusHelper::m_PartnerNameVanishedCallback(GDBusConnection* connection, char const* name,
                                                     void* userData)
{
    ZV_LOG_INFO_LINE("m_PartnerNameVanishedCallback name=%s", name);
    if (connection == nullptr || userData == nullptr) {
        ZV_LOG_ERROR_LINE("Empty user_data or connection not valid.");
    }
    if (userData == nullptr) {
        return;
    }
    CallbackGate::Pointer const gate = CallbackGate::FromToken(userData);
    CallbackGate::Visit<CProxyDBusHelper> first(gate);
    if (!first) {
        return;
    }
    std::shared_ptr<CMutexDBus> const mutex = first->m_state->m_mutex;
    first.Leave();

    CAutoLockDBus const lock(*mutex);
    CallbackGate::Visit<CProxyDBusHelper> channel(gate);
    if (!channel || channel->m_state->CurrentLink().partner != name) {
        return;
    }
    // Without a connection, the bus has died: the handler runs, and sends still report what has closed.
    if (connection != nullptr) {
        ZV_LOG_ERROR_LINE("Connection lost with partner id=%s", name);
        {
            std::lock_guard<std::mutex> const guard(channel->m_state->m_guard);
            channel->m_state->m_partner_name.clear();
        }
        channel->m_Disconnect();
    }
    State::DisconnectHandler const handler = channel->m_state->Get(&State::m_disconnect_cb);
    std::string const own = channel->m_state->m_name;

    // From here on, a thread that destroys the channel does not wait: the handler may need its lock.
    channel.Leave();
    if (handler.call != nullptr) {
        handler.call(name, own, handler.userData);
    }
}

bool CProxyDBusHelper::IsConnectionReady()
{
    return m_state->CurrentLink().ready;
}

std::string CProxyDBusHelper::GetPublicName()
{
    ZV_LOG_ENTRY();
    return m_state->m_unique_name;
}

void CProxyDBusHelper::SetCallback(CMessageBuffer (*messageCb)(CMessageBuffer&, void*),
                                   void (*notificationCb)(CMessageBuffer&, void*), void* userData)
{
    std::lock_guard<std::mutex> const lock(m_state->m_guard);
    m_state->m_message_cb = {messageCb, userData};
    m_state->m_notification_cb = {notificationCb, userData};
}

void CProxyDBusHelper::SetDisconnectNotiCB(void (*cb)(std::string, std::string, void*), void* userData)
{
    std::lock_guard<std::mutex> const lock(m_state->m_guard);
    m_state->m_disconnect_cb = {cb, userData};
}
