// SPDX-License-Identifier: MIT
/// @file
/// One end of a channel between an application and the service.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/MessageBuffer.h>
#include <zviptv/MutexDBus.h>

#include <memory>
#include <string>

typedef struct _GAsyncResult GAsyncResult;
typedef struct _GCancellable GCancellable;
typedef struct _GDBusConnection GDBusConnection;
typedef struct _GDBusInterfaceVTable GDBusInterfaceVTable;
typedef struct _GDBusMethodInvocation GDBusMethodInvocation;
typedef struct _GObject GObject;
typedef struct _GVariant GVariant;

namespace zviptv {
struct ChannelAccess;
}

/// One end of a point-to-point channel on the system bus, between a proxy and its partner in the service.
///
/// The channel exports the object PROXY_DBUS_HELPER_OBJ_NAME + "/" + its name under its connection's unique
/// name; both ends use the same object path. To use it: construct it, call SetCallback, call
/// SetDisconnectNotiCB if the loss of the partner matters, pass GetPublicName() to the partner, call
/// Connect(partner), send, and destroy it.
///
/// A process exports one object per name: of several channels with the same name, the first gets the calls.
/// The others connect, send, and get the notifications of their partners; for each of them, the log contains
/// "Error while registering object".
/// Threads: the channel does not run a main loop. Incoming calls are delivered through the main context that
/// was the thread default when the channel was constructed. Notifications and the loss of the partner are
/// delivered through the main context that was the thread default when Connect ran. Those contexts must be
/// iterated. Sends work from any thread and need no loop.
/// The memory of an asynchronous send is released when the sending thread's context is iterated.
/// ZVGetLastFailure(), called on the sending thread, says why Connect or a send failed.
///
/// Lifetime: a channel may be destroyed from any thread and from inside any of its callbacks. When the
/// destructor has returned, no message or notification callback runs on another thread, and none starts. The
/// destructor does not wait for a disconnect handler that has begun, so that the handler may take a lock that
/// the destroying thread holds. Therefore the handler's user data must live until the handler has returned.
/// Do not destroy a channel while another thread, inside a message or notification callback, waits for the
/// destroying thread.
///
/// The channels of a process share one bus connection, which closes with the last of them: messages that were
/// sent just before may then be lost. When the bus has died, its channels stay dead, and their disconnect
/// handlers run. A channel that is constructed when a bus is available again uses a new connection.
///
/// An exception that leaves a callback passes through GLib's frames to the code that iterates the context.
/// Later messages are still delivered, and a call that was being handled is answered with the error
/// "org.freedesktop.DBus.Error.NoReply".
class ZVIPTV_API CProxyDBusHelper
{
public:
    static char const* const PROXY_DBUS_HELPER_PREFIX;     ///< prefix of all names
    static char const* const PROXY_DBUS_HELPER_OBJ_NAME;   ///< object path without the channel's name
    static char const* const PROXY_DBUS_HELPER_OBJ_IFACE;  ///< interface of the object
    static char const* const PROXY_DBUS_HELPER_OBJ_METHOD; ///< method of requests, "Send"
    static char const* const PROXY_DBUS_HELPER_SIG_NAME;   ///< signal of notifications, "SendSignal"
    static char const* const PROXY_DBUS_HELPER_SYN_SUFFIX; ///< "_SYN"; reserved, the library does not use it
    static char const* const PROXY_DBUS_HELPER_SYNACK_SUFFIX; ///< "_SYN_ACK"; reserved
    static char const* const PROXY_DBUS_HELPER_ACK_SUFFIX;    ///< "_ACK"; reserved
    static char const* const INTERFACE_XML;                   ///< introspection data of the object
    static GDBusInterfaceVTable const m_vtable;               ///< callbacks of the object for GIO

    /// Largest message body that a send accepts, in bytes on the wire. The bus disconnects a sender of more
    /// than 32 MiB, so larger messages are refused here.
    static constexpr int MAX_BODY_SIZE = 32 * 1024 * 1024 - 4096;

    /// Attaches to the system bus and exports the object. The channel is also constructed without a bus, and
    /// with a name whose object path is invalid or longer than 512 characters. Every function of such a
    /// channel fails, and the log says why.
    explicit CProxyDBusHelper(std::string name);

    /// Exports the object on the caller's connection to a message bus, and holds the connection until the
    /// channel is destroyed. Only one channel of this name can be on the connection. With a null connection,
    /// everything fails.
    CProxyDBusHelper(std::string name, GDBusConnection* connection);

    /// Removes the object and all callbacks; the class comment says what it waits for.
    virtual ~CProxyDBusHelper();

    CProxyDBusHelper(CProxyDBusHelper const&) = delete;
    CProxyDBusHelper& operator=(CProxyDBusHelper const&) = delete;

    /// Binds the channel to the bus name `partner`: watches it and subscribes to its signals. Returns 1 on
    /// success, 0 on failure. It also returns 0 if the partner is lost while it connects; the handler may
    /// then have run already. Notifications may arrive before it returns. Call it once per channel, and again
    /// after the partner was lost.
    int Connect(std::string partner);

    /// Returns true from a successful Connect until the thread that iterates the main context handles the
    /// loss of the partner.
    bool IsConnectionReady();

    /// The unique bus name of this end; empty without a bus.
    std::string GetPublicName();

    /// Sets the handler of incoming calls, which returns the reply, and that of notifications; `userData` is
    /// passed to both. Null handlers are allowed: calls are then answered with an empty message. A handler
    /// that was replaced may still run, or be about to: keep its user data valid until the channel has ended.
    void SetCallback(CMessageBuffer (*messageCb)(CMessageBuffer& request, void* userData),
                     void (*notificationCb)(CMessageBuffer& notification, void* userData), void* userData);

    /// Sets the handler of the partner's loss; it gets the lost bus name and this channel's name. It runs
    /// with the channel's partner-loss mutex held. It may destroy the channel, but must not iterate the main
    /// context, where a second loss on the same channel would wait for the first one forever. It is not
    /// called on destruction.
    void SetDisconnectNotiCB(void (*cb)(std::string partner, std::string own, void* userData),
                             void* userData);

    /// Sends a request. If `async` is 0, it waits at most 2000 ms for the reply, and stores it in `reply`.
    /// Otherwise it returns as soon as the call is sent, does not change `reply`, and drops the answer when
    /// it arrives. Returns 1 on success. Returns 0, with `reply` unchanged, if the channel is not connected,
    /// the partner does not answer in time or answers with an error, or the message cannot be sent (a key
    /// that is not UTF-8, a body over MAX_BODY_SIZE). The bus itself answers with an error if 128 calls of
    /// the process have no answer yet, including those that have timed out.
    int SendMessage(CMessageBuffer& request, CMessageBuffer& reply, int async);

    /// Sends a request without waiting. `completion` runs once, through the main context that is the calling
    /// thread's default. It gets the reply, or null if there is none; ZVGetLastFailure() then says why until
    /// `completion` returns, and is ZV_FAILURE_NONE if `cancellable` was cancelled. `completion` may move
    /// from the reply, which ends when `completion` returns.
    ///
    /// `timeoutMs` is the longest wait in milliseconds; -1 is GIO's default of 25 s, INT_MAX means no limit.
    /// `cancellable` may be null. Returns 1 if the request was sent. Returns 0, and does not run
    /// `completion`, if the channel is not connected or the message cannot be sent, as for SendMessage. The
    /// channel may be destroyed before `completion` runs.
    int SendAsync(CMessageBuffer& request, int timeoutMs, GCancellable* cancellable,
                  void (*completion)(CMessageBuffer* reply, void* userData), void* userData);

    /// Sends a notification to the partner only. Returns 1 if it was queued, 0 if it cannot be sent.
    int SendNotification(CMessageBuffer& message);

    /// The unique bus name of the peer whose call or notification the calling thread is handling; empty
    /// outside a message or notification callback. A service that answers several applications uses it to
    /// identify the caller.
    static std::string GetSenderName();

private:
    friend struct zviptv::ChannelAccess;
    struct State;

    int m_CreatePartnerProxy();
    void m_Disconnect();
    int m_SendSyncMessage(CMessageBuffer& request, CMessageBuffer& reply);
    int m_SendAsyncMessage(CMessageBuffer& request,
                           void (*callback)(GObject* source, GAsyncResult* result, void* userData),
                           void* userData);

    static void m_PartnerNameVanishedCallback(GDBusConnection* connection, char const* name, void* userData);
    static void m_GAsyncMessageCallback(GObject* source, GAsyncResult* result, void* userData);
    static void m_SignalCallback(GDBusConnection* connection, char const* sender, char const* objectPath,
                                 char const* interfaceName, char const* signalName, GVariant* parameters,
                                 void* userData);
    static void m_MethodCallback(GDBusConnection* connection, char const* sender, char const* objectPath,
                                 char const* interfaceName, char const* methodName, GVariant* parameters,
                                 GDBusMethodInvocation* invocation, void* userData);

    std::unique_ptr<State> m_state;
};
