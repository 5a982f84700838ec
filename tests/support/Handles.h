#pragma once

#include <dbus/dbus.h>

#include <unistd.h>

#include <memory>
#include <utility>

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

/// A private connection has to be closed before the last reference goes.
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

class FileHandle
{
public:
    FileHandle() = default;
    explicit FileHandle(int descriptor) : m_descriptor(descriptor) {}
    ~FileHandle() { Reset(); }
    FileHandle(FileHandle&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileHandle& operator=(FileHandle&& other) noexcept
    {
        if (this != &other) {
            Reset();
            m_descriptor = std::exchange(other.m_descriptor, -1);
        }
        return *this;
    }

    int Get() const { return m_descriptor; }
    explicit operator bool() const { return m_descriptor >= 0; }
    void Reset()
    {
        if (m_descriptor >= 0) {
            close(std::exchange(m_descriptor, -1));
        }
    }

private:
    int m_descriptor = -1;
};

} // namespace zviptv::test
