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
/// name; both ends use the same object path. Use: construct, SetCallback, SetDisconnectNotiCB where the loss
/// of the partner matters, hand GetPublicName() to the partner, Connect(partner), send, destroy.
///
/// A process exports one object per name: of several channels of the same name the first gets the calls, the
/// others (the log says "Error while registering object") connect and send, and get the notifications of
/// their partners.
///
/// Threads: the channel runs no loop of its own. Incoming calls are delivered through the main context that
/// was the thread default where the channel was constructed, notifications and the loss of the partner
/// through the one where Connect ran; those contexts must be iterated. Sends may be made from any thread and
/// need no loop. What an asynchronous send holds is released when the sending thread's context is iterated.
/// ZVGetLastFailure() says on the sending thread why Connect or a send failed.
///
/// Lifetime: a channel may be destroyed from any thread and from inside any of its callbacks. When the
/// destructor returns, no message or notification callback runs on another thread and none starts any more. A
/// disconnect handler that has begun is never waited for, so that it may itself destroy things that the
/// destroying thread guards by a lock: what its user data points to has to outlive it. Do not destroy a
/// channel while another thread waits for the calling one inside a message or notification callback.
///
/// The channels of a process share one bus connection, which closes with the last of them: what was sent just
/// before may be lost then. When the bus has died, a channel on it stays dead, and its disconnect handler
/// runs; a channel that is constructed once a bus is there again is on a new connection.
///
/// An exception that leaves a callback passes through GLib's frames to whoever iterates the context; later
/// messages are still delivered, and a call that was being handled is answered with the error
/// "org.freedesktop.DBus.Error.NoReply".
class ZVIPTV_API CProxyDBusHelper
{
public:
    static char const* const PROXY_DBUS_HELPER_PREFIX;     ///< what all names begin with
    static char const* const PROXY_DBUS_HELPER_OBJ_NAME;   ///< object path without the channel's name
    static char const* const PROXY_DBUS_HELPER_OBJ_IFACE;  ///< interface of the object
    static char const* const PROXY_DBUS_HELPER_OBJ_METHOD; ///< method of requests, "Send"
    static char const* const PROXY_DBUS_HELPER_SIG_NAME;   ///< signal of notifications, "SendSignal"
    static char const* const PROXY_DBUS_HELPER_SYN_SUFFIX; ///< "_SYN"; reserved, the library does not use it
    static char const* const PROXY_DBUS_HELPER_SYNACK_SUFFIX; ///< "_SYN_ACK"; reserved
    static char const* const PROXY_DBUS_HELPER_ACK_SUFFIX;    ///< "_ACK"; reserved
    static char const* const INTERFACE_XML;                   ///< introspection data of the object
    static GDBusInterfaceVTable const m_vtable;               ///< what GIO calls for the object

    /// Largest message body in bytes, as it stands on the wire, that a send accepts: the bus disconnects
    /// whoever sends more than 32 MiB, so larger messages are refused here.
    static constexpr int MAX_BODY_SIZE = 32 * 1024 * 1024 - 4096;

    /// Attaches to the system bus and exports the object. Without a bus, or with a name that makes no object
    /// path or makes one of more than 512 characters, the channel is constructed all the same (the log tells)
    /// and everything on it fails.
    explicit CProxyDBusHelper(std::string name);

    /// Withdraws the object and all callbacks; what it waits for is said above.
    virtual ~CProxyDBusHelper();

    CProxyDBusHelper(CProxyDBusHelper const&) = delete;
    CProxyDBusHelper& operator=(CProxyDBusHelper const&) = delete;

    /// Binds the channel to the bus name `partner`: watches it and subscribes to its signals. 1 on success, 0
    /// on failure. (0 also when the partner is lost meanwhile, whose handler may then have run; notifications
    /// may arrive before it returns.) Once per channel, and again after the partner was lost.
    int Connect(std::string partner);

    /// True from a successful Connect until the loss of the partner is handled, by the thread that iterates
    /// the main context.
    bool IsConnectionReady();

    /// The unique bus name of this end; empty without a bus.
    std::string GetPublicName();

    /// Sets the handlers of incoming calls (its return value is the reply) and of notifications; `userData`
    /// is passed to both. Null handlers are allowed: calls are then answered with an empty message. A handler
    /// that was replaced may still be running, or about to: its user data stays valid until the channel has
    /// ended.
    void SetCallback(CMessageBuffer (*messageCb)(CMessageBuffer& request, void* userData),
                     void (*notificationCb)(CMessageBuffer& notification, void* userData), void* userData);

    /// Sets the handler of the partner's loss; it gets the lost bus name and this channel's name. It runs
    /// with the channel's partner-loss mutex held and may destroy the channel but must not iterate the main
    /// context, where a second loss on the same channel would wait for the first for ever. Not called on
    /// destruction.
    void SetDisconnectNotiCB(void (*cb)(std::string partner, std::string own, void* userData),
                             void* userData);

    /// Sends a request. `async` 0 waits for the reply, 2000 ms at most, and replaces `reply` by it; any other
    /// value returns as soon as the call is on its way, leaves `reply` alone and drops the answer when it
    /// comes. 1 on success; 0, with `reply` unchanged, when the channel is not connected, the partner does
    /// not answer in time or answers with an error, or the message cannot travel (a key that is not UTF-8,
    /// over MAX_BODY_SIZE). The bus answers with an error itself when 128 calls of the process have no answer
    /// yet, those whose time is over included.
    int SendMessage(CMessageBuffer& request, CMessageBuffer& reply, int async);

    /// Sends a notification to the partner alone. 1 once it is queued, 0 when it cannot be sent.
    int SendNotification(CMessageBuffer& message);

    /// The unique bus name of the peer whose call or notification the calling thread is handling; empty
    /// outside a message or notification callback. Tells a service that answers several applications who is
    /// asking.
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
