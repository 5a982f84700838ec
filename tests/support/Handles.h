// SPDX-License-Identifier: MIT
#pragma once

#include <dbus/dbus.h>

#include <memory>

namespace zviptv::test {

struct MessageUnref
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using MessageHandle = std::unique_ptr<DBusMessage, MessageUnref>;

struct PendingUnref
{
    void operator()(DBusPendingCall* pending) const { dbus_pending_call_unref(pending); }
};
using PendingHandle = std::unique_ptr<DBusPendingCall, PendingUnref>;

/// A private connection must be closed before the last reference is dropped.
struct ConnectionClose
{
    void operator()(DBusConnection* connection) const
    {
        dbus_connection_close(connection);
        dbus_connection_unref(connection);
    }
};
using ConnectionHandle = std::unique_ptr<DBusConnection, ConnectionClose>;

class ErrorHandle
{
public:
    ErrorHandle() { dbus_error_init(&m_error); }
    ~ErrorHandle() { dbus_error_free(&m_error); }
    ErrorHandle(ErrorHandle const&) = delete;
    ErrorHandle& operator=(ErrorHandle const&) = delete;

    DBusError* Get() { return &m_error; }
    bool IsSet() const { return dbus_error_is_set(&m_error) != 0; }
    char const* Text() const { return IsSet() ? m_error.message : ""; }

private:
    DBusError m_error;
};

} // namespace zviptv::test
