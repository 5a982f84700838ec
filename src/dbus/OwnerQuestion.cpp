// SPDX-License-Identifier: MIT
#include "dbus/OwnerQuestion.h"

#include "dbus/BusConnection.h"
#include "dbus/FreeDescriptors.h"
#include "dbus/HelperMessage.h"
#include "dbus/SendFailure.h"
#include "failure/LastFailure.h"

#include <dbus/dbus.h>

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace zviptv {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

struct MessageRelease
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using Message = std::unique_ptr<DBusMessage, MessageRelease>;

/// Closes a private connection before it releases it, as libdbus requires.
struct ConnectionClose
{
    void operator()(DBusConnection* connection) const
    {
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
};
using Connection = std::unique_ptr<DBusConnection, ConnectionClose>;

/// The message that calls a method of the bus.
Message BusCall(char const* method)
{
    return Message(
        dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, method));
}

/// Waits until the connection can read or write. After each signal that interrupts it, libdbus's own wait
/// starts again with the whole time.
void Wait(DBusConnection* connection, Clock::time_point deadline)
{
    // Before the end of the handshake, libdbus does not show whether it still has to write.
    bool const isReady = dbus_connection_get_is_authenticated(connection) != FALSE;
    Milliseconds const longest(isReady ? 2000 : 20);
    auto const left = std::chrono::ceil<Milliseconds>(deadline - Clock::now());
    pollfd polled = {-1, POLLIN, 0};
    dbus_connection_get_unix_fd(connection, &polled.fd);
    if (isReady && dbus_connection_has_messages_to_send(connection) != FALSE) {
        polled.events |= POLLOUT;
    }
    poll(&polled, 1, static_cast<int>(std::clamp(left, Milliseconds(0), longest).count()));
}

/// The answer to the call with this serial; null if the bus ends or does not answer in time. All other
/// messages are read and dropped.
Message Await(DBusConnection* connection, dbus_uint32_t serial, Clock::time_point deadline)
{
    for (;;) {
        // Each step of the handshake either reads or writes.
        bool const isOpen = dbus_connection_read_write(connection, 0) != FALSE &&
                            dbus_connection_read_write(connection, 0) != FALSE;
        while (Message message{dbus_connection_pop_message(connection)}) {
            if (dbus_message_get_reply_serial(message.get()) == serial) {
                return message;
            }
        }
        if (!isOpen || Clock::now() >= deadline) {
            return nullptr;
        }
        Wait(connection, deadline);
    }
}

/// Sends "Hello" and the query at once: the bus handles them in this order.
Message AskBus(DBusConnection* connection, Clock::time_point deadline)
{
    char const* const name = helper::BusName;
    Message const hello = BusCall("Hello");
    Message const question = BusCall("NameHasOwner");
    dbus_uint32_t serial = 0;
    if (hello == nullptr || question == nullptr ||
        dbus_message_append_args(question.get(), DBUS_TYPE_STRING, &name, DBUS_TYPE_INVALID) == FALSE ||
        dbus_connection_send(connection, hello.get(), nullptr) == FALSE ||
        dbus_connection_send(connection, question.get(), &serial) == FALSE) {
        return nullptr;
    }
    return Await(connection, serial, deadline);
}

/// Receives and owns a DBusError.
class BusError
{
public:
    BusError() { dbus_error_init(&m_error); }
    ~BusError() { dbus_error_free(&m_error); }
    BusError(BusError const&) = delete;
    BusError& operator=(BusError const&) = delete;

    DBusError* Out() { return &m_error; }
    char const* Name() const { return m_error.name == nullptr ? "" : m_error.name; }
    char const* Message() const { return m_error.message == nullptr ? "" : m_error.message; }

private:
    DBusError m_error = {};
};

/// Sets the failure of a connection without an answer.
void SetUnanswered(DBusConnection* connection)
{
    if (dbus_connection_get_is_connected(connection) != FALSE) {
        SetFailure(ZV_FAILURE_TIMED_OUT,
                   {"no answer from the bus within 2000 ms; check that it does not hang"});
    } else {
        SetFailure(ZV_FAILURE_NO_BUS, {"the bus closed the connection; check that it still runs"});
    }
}

} // namespace

OwnerQuestion::Answer OwnerQuestion::Ask()
{
    Error shortage; // the first query for the address opens descriptors in GLib, too
    if (!HaveFreeDescriptors(DescriptorsOfAConnection, shortage)) {
        SetShortage();
        return Answer::Failed;
    }
    BusError error;
    Connection const connection(dbus_connection_open_private(SystemBusAddress().c_str(), error.Out()));
    if (connection == nullptr) {
        SetFailure(ZV_FAILURE_NO_BUS,
                   {error.Message(), "; start the bus, or set DBUS_SYSTEM_BUS_ADDRESS to one that runs"});
        return Answer::Failed;
    }
    Message const answer = AskBus(connection.get(), Clock::now() + Milliseconds(2000));
    dbus_bool_t owned = FALSE;
    if (answer == nullptr) {
        SetUnanswered(connection.get());
        return Answer::Failed;
    }
    if (dbus_message_get_args(answer.get(), nullptr, DBUS_TYPE_BOOLEAN, &owned, DBUS_TYPE_INVALID) == FALSE) {
        dbus_set_error_from_message(error.Out(), answer.get());
        SetFailure(ZV_FAILURE_BUS_ERROR, {error.Message()}, "", error.Name());
        return Answer::Failed;
    }
    if (owned == FALSE) {
        SetFailure(ZV_FAILURE_NO_SERVICE, {"no service runs on this bus; start it"});
    }
    return owned != FALSE ? Answer::Owned : Answer::NotOwned;
}

} // namespace zviptv
