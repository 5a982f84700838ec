// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/BusConnection.h"
#include "dbus/CallbackGate.h"
#include "dbus/PartnerWatch.h"
#include "dbus/SignalSubscription.h"
#include "log/Log.h"

#include <zviptv/ProxyDBusHelper.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>

/// The state of a channel. The names of the bus objects do not change after the constructor. The other
/// members, which senders, callbacks and Connect share, are guarded by m_guard.
struct CProxyDBusHelper::State
{
    struct MessageHandler
    {
        CMessageBuffer (*call)(CMessageBuffer&, void*) = nullptr;
        void* userData = nullptr;
    };
    struct NotificationHandler
    {
        void (*call)(CMessageBuffer&, void*) = nullptr;
        void* userData = nullptr;
    };
    struct DisconnectHandler
    {
        void (*call)(std::string, std::string, void*) = nullptr;
        void* userData = nullptr;
    };

    /// The data of a send. It holds separate references, so that the partner may be lost during the send.
    struct Link
    {
        bool ready;
        guint subscription;
        std::string partner;
        zviptv::Owned<GDBusProxy> proxy;
    };

    explicit State(CProxyDBusHelper* channel) : m_gate(std::make_shared<zviptv::CallbackGate>(channel)) {}

    Link CurrentLink()
    {
        std::lock_guard<std::mutex> const lock(m_guard);
        return {m_connection_ready == 1, m_subscription.Id(), m_partner_name,
                zviptv::Share(m_partner_proxy.get())};
    }

    template <typename Handler>
    Handler Get(Handler State::*handler)
    {
        std::lock_guard<std::mutex> const lock(m_guard);
        return this->*handler;
    }

    std::string m_name;
    std::string m_unique_name;
    std::string m_object_name;
    zviptv::Owned<GDBusNodeInfo> m_node_info;
    zviptv::Owned<GDBusConnection> m_connection;
    zviptv::ObjectRegistration m_registration;
    bool m_is_withdrawn = false;

    std::mutex m_guard;
    std::string m_partner_name;
    zviptv::PartnerWatch m_watcher;
    zviptv::Owned<GDBusProxy> m_partner_proxy;
    zviptv::SignalSubscription m_subscription;
    int m_connection_ready = 0;
    MessageHandler m_message_cb;
    NotificationHandler m_notification_cb;
    DisconnectHandler m_disconnect_cb;

    /// Held while the loss of the partner is handled. Shared, because the handler may end the channel.
    std::shared_ptr<CMutexDBus> m_mutex = std::make_shared<CMutexDBus>();

    zviptv::CallbackGate::Pointer m_gate;
};

namespace zviptv {

/// The functions of a channel that the library uses in addition to the public ones.
struct ChannelAccess
{
    /// What the constructors do. `connect` gives the connection, or null and an error.
    static void Begin(CProxyDBusHelper& channel, std::string name,
                      std::function<Owned<GDBusConnection>(Error&)> const& connect);

    /// What all sends do that do not wait: `callback` finishes the call of the proxy that it gets. 1 when the
    /// request is on its way; otherwise 0, a log line and the calling thread's failure.
    static int StartCall(CProxyDBusHelper& channel, CMessageBuffer const& request, int timeoutMs,
                         GCancellable* cancellable, GAsyncReadyCallback callback, void* userData,
                         SourceLocation const& where);

    static CallbackGate::Pointer Gate(CProxyDBusHelper const& channel) { return channel.m_state->m_gate; }

    /// Ends the channel, except for its memory, which calls on other threads still use: removes the object
    /// and all callbacks, and refuses sends. Does not wait for running callbacks.
    static void Withdraw(CProxyDBusHelper& channel);

    /// Returns false after the bus of the channel has died. Opens no connection.
    static bool IsOnLiveBus(CProxyDBusHelper const& channel)
    {
        return channel.m_state->m_connection == nullptr || IsAlive(channel.m_state->m_connection);
    }

    /// Whether the channel uses the process's present connection; see IsPresent().
    static bool IsOnPresentBus(CProxyDBusHelper const& channel)
    {
        return IsPresent(channel.m_state->m_connection);
    }
};

} // namespace zviptv
