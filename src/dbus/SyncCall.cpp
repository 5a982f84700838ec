// SPDX-License-Identifier: MIT
#include "dbus/SyncCall.h"

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace zviptv {

namespace {

using Clock = std::chrono::steady_clock;

/// The interval in which a waiting thread checks whether its connection has closed, because nothing reports
/// it.
constexpr std::chrono::milliseconds LookInterval{25};

/// GIO counts its serials from 1: the upper half is free for this file's calls.
constexpr guint32 FirstSerial = 0x80000000;

constexpr char BusName[] = "org.freedesktop.DBus";

/// A call that waits for its answer.
struct Waiter
{
    GDBusConnection* connection;
    guint32 serial;
    char const* callee;
    std::condition_variable arrived{};
    Owned<GDBusMessage> answer{};
};

/// All waiting calls of the process. Never destroyed: GIO's thread may use it at exit.
struct Waiters
{
    std::mutex mutex;
    std::vector<Waiter*> all;
    guint32 lastSerial = FirstSerial | std::random_device()(); // so that strangers cannot guess it

    static Waiters& Get()
    {
        static Waiters& waiters = *new Waiters;
        return waiters;
    }

    std::vector<Waiter*>::iterator Find(GDBusConnection const* connection, guint32 serial)
    {
        return std::find_if(all.begin(), all.end(), [&](Waiter const* waiter) {
            return waiter->serial == serial && waiter->connection == connection;
        });
    }
};

/// Whether it is an answer of the callee, or of the bus in its place. The owner of a well-known name answers
/// from its unique name.
bool IsAnswer(GDBusMessage* message, Waiter const& waiter)
{
    GDBusMessageType const type = g_dbus_message_get_message_type(message);
    char const* const sender = g_dbus_message_get_sender(message);
    return (type == G_DBUS_MESSAGE_TYPE_METHOD_RETURN || type == G_DBUS_MESSAGE_TYPE_ERROR) &&
           sender != nullptr &&
           (std::strcmp(sender, waiter.callee) == 0 || std::strcmp(sender, BusName) == 0 ||
            g_dbus_is_unique_name(waiter.callee) == FALSE);
}

/// Takes the answers that a call waits for; GIO gets all other messages. Runs on GIO's thread.
GDBusMessage* TakeAnswer(GDBusConnection* connection, GDBusMessage* message, gboolean isIncoming,
                         gpointer /*userData*/)
{
    guint32 const serial = isIncoming != FALSE ? g_dbus_message_get_reply_serial(message) : 0;
    if (serial < FirstSerial) {
        return message;
    }
    Waiters& waiters = Waiters::Get();
    std::lock_guard<std::mutex> const lock(waiters.mutex);
    auto const found = waiters.Find(connection, serial);
    if (found == waiters.all.end() || !IsAnswer(message, **found)) {
        return message;
    }
    (*found)->answer.reset(message);
    (*found)->arrived.notify_one();
    return nullptr;
}

/// Marks the connections whose messages this copy of TakeAnswer filters; a process may have several copies of
/// the library.
GQuark IsListening()
{
    static int copy = 0;
    static GQuark const quark = g_quark_from_string(
        ("zviptv-takes-answers-" + std::to_string(reinterpret_cast<std::uintptr_t>(&copy))).c_str());
    return quark;
}

/// Makes TakeAnswer filter the messages of the connection. Call it with the lock held.
void ListenTo(GDBusConnection* connection)
{
    if (g_object_get_qdata(G_OBJECT(connection), IsListening()) == nullptr) {
        g_dbus_connection_add_filter(connection, TakeAnswer, nullptr, nullptr);
        g_object_set_qdata(G_OBJECT(connection), IsListening(), connection);
    }
}

Owned<GVariant> BodyOf(GDBusMessage* answer, Error& error)
{
    if (g_dbus_message_to_gerror(answer, error.Out()) != FALSE) {
        return nullptr;
    }
    GVariant* const body = g_dbus_message_get_body(answer);
    return Owned<GVariant>(body != nullptr ? g_variant_ref(body)
                                           : g_variant_ref_sink(g_variant_new_tuple(nullptr, 0)));
}

} // namespace

Owned<GVariant> CallAndWait(GDBusConnection* connection, MethodTarget const& target, GVariant* body,
                            std::chrono::milliseconds timeout, Error& error)
{
    Owned<GDBusMessage> const call(
        g_dbus_message_new_method_call(target.destination, target.path, target.interface, target.method));
    g_dbus_message_set_flags(call.get(), target.flags);
    g_dbus_message_set_body(call.get(), body);

    Waiters& waiters = Waiters::Get();
    std::unique_lock<std::mutex> lock(waiters.mutex);
    ListenTo(connection);
    waiters.lastSerial = std::max(waiters.lastSerial + 1, FirstSerial);
    Waiter waiter{connection, waiters.lastSerial, target.destination};
    waiters.all.push_back(&waiter);
    lock.unlock();

    g_dbus_message_set_serial(call.get(), waiter.serial);
    auto const deadline = Clock::now() + timeout;
    bool const isSent =
        g_dbus_connection_send_message(connection, call.get(), G_DBUS_SEND_MESSAGE_FLAGS_PRESERVE_SERIAL,
                                       nullptr, error.Out()) != FALSE;
    lock.lock();
    while (isSent && waiter.answer == nullptr && Clock::now() < deadline &&
           g_dbus_connection_is_closed(connection) == FALSE) {
        waiter.arrived.wait_until(lock, std::min(deadline, Clock::now() + LookInterval));
    }
    waiters.all.erase(waiters.Find(connection, waiter.serial));
    lock.unlock();

    if (waiter.answer != nullptr) {
        return BodyOf(waiter.answer.get(), error);
    }
    if (isSent) {
        bool const isClosed = g_dbus_connection_is_closed(connection) != FALSE;
        error.Set(isClosed ? G_IO_ERROR_CLOSED : G_IO_ERROR_TIMED_OUT,
                  g_dgettext("glib20", isClosed ? "The connection is closed" : "Timeout was reached"));
    }
    return nullptr;
}

} // namespace zviptv
