// SPDX-License-Identifier: MIT
#include "doctor/PolicyProbe.h"

#include <zviptv/ConnectionHelperDBusClient.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

namespace zviptv::ctl::doctor {

namespace {

constexpr char Path[] = "/org/corvel/zviptvapi/doctor";
constexpr char ChannelInterface[] = "org.corvel.zviptvapi.DbusCommunication";
constexpr char FreeInterface[] = "org.corvel.zviptvapi.Doctor"; ///< no policy mentions it

/// The signals that the bus delivers to a connection.
class Listener
{
public:
    explicit Listener(GDBusConnection* connection)
        : m_connection(connection), m_received(std::make_shared<Received>()),
          m_filter(g_dbus_connection_add_filter(connection, Listen, new std::shared_ptr<Received>(m_received),
                                                Drop))
    {
    }
    ~Listener() { g_dbus_connection_remove_filter(m_connection, m_filter); }
    Listener(Listener const&) = delete;
    Listener& operator=(Listener const&) = delete;

    bool HasReceivedGuarded() const { return m_received->guarded; }
    bool HasReceivedFree() const { return m_received->free; }

private:
    struct Received
    {
        std::atomic<bool> guarded{false};
        std::atomic<bool> free{false};
    };

    /// Runs on a thread of GLib.
    static GDBusMessage* Listen(GDBusConnection* /*connection*/, GDBusMessage* message, gboolean incoming,
                                gpointer received)
    {
        char const* const interface = g_dbus_message_get_interface(message);
        if (incoming != FALSE && interface != nullptr &&
            g_dbus_message_get_message_type(message) == G_DBUS_MESSAGE_TYPE_SIGNAL) {
            Received& all = **static_cast<std::shared_ptr<Received>*>(received);
            all.guarded = all.guarded || std::strcmp(interface, ChannelInterface) == 0;
            all.free = all.free || std::strcmp(interface, FreeInterface) == 0;
        }
        return message;
    }
    static void Drop(gpointer received) { delete static_cast<std::shared_ptr<Received>*>(received); }

    GDBusConnection* m_connection;
    std::shared_ptr<Received> m_received;
    guint m_filter;
};

/// While it exists, root connects as another user.
class ActingAs
{
public:
    explicit ActingAs(uid_t user) : m_isActing(seteuid(user) == 0) {}
    ~ActingAs()
    {
        if (m_isActing && seteuid(0) != 0) {
            std::abort(); // the results after this would be wrong
        }
    }
    ActingAs(ActingAs const&) = delete;
    ActingAs& operator=(ActingAs const&) = delete;

    bool IsActing() const { return m_isActing; }

private:
    bool m_isActing;
};

/// Whether the bus lets a call through: then GLib's thread at the other end answers that there is no such
/// method.
std::optional<bool> MayCall(BusProbe& from, BusProbe const& to, char const* interface)
{
    Reply const reply = from.Call({to.Name(), Path, interface, "Send"}, nullptr);
    if (reply.kind == Reply::Kind::Silence) {
        return std::nullopt;
    }
    return !reply.IsDenied();
}

/// The policy denies one signal to everybody except the service's user; a bus without the policy allows it.
/// The existence of the file proves nothing, because the bus may not have read it.
std::optional<bool> IsSignalGuarded(BusProbe& from, BusProbe& to)
{
    Listener const listener(to.Connection());
    from.Emit({to.Name(), Path, ChannelInterface, "SendSignal"});
    from.Emit({to.Name(), Path, FreeInterface, "Last"});
    // The bus handles the messages of each connection in order, so that afterwards all delivered signals have
    // arrived.
    from.CallBus("GetId");
    to.CallBus("GetId");
    return listener.HasReceivedFree() ? std::optional(!listener.HasReceivedGuarded()) : std::nullopt;
}

/// Only the service's user may call an application's channel.
std::optional<bool> MayServiceCall(BusProbe& from, BusProbe const& to, Facts const& facts)
{
    if (facts.caller.isServiceUser) {
        return MayCall(from, to, ChannelInterface);
    }
    if (!facts.caller.isRoot || !facts.accounts.userId) {
        return std::nullopt;
    }
    ActingAs const acting(*facts.accounts.userId);
    BusFacts ignored = facts.bus;
    BusProbe service(ignored);
    return acting.IsActing() && service.IsOpen() ? MayCall(service, to, ChannelInterface) : std::nullopt;
}

} // namespace

void ProbePolicy(BusProbe& from, Facts& facts)
{
    BusFacts ignored = facts.bus;
    BusProbe to(ignored);
    PolicyFacts& policy = facts.policy;
    std::optional<bool> const mayCall =
        to.IsOpen() ? MayCall(from, to, CConnectionHelperDBusClient::BUSNAME) : std::nullopt;
    if (!mayCall) {
        return;
    }
    policy.deniesByDefault = !*mayCall;
    if (*mayCall) {
        return;
    }
    policy.isServiceAllowed = MayServiceCall(from, to, facts);
    policy.isLoaded = IsSignalGuarded(from, to);
    if (facts.caller.isServiceUser && policy.isServiceAllowed.value_or(false)) {
        policy.isLoaded = true; // the bus allows this user's signals
    }
}

} // namespace zviptv::ctl::doctor
