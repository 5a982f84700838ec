// SPDX-License-Identifier: MIT
/// @file
/// The client of the helper bus, with which a channel finds its partner in the service.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/MessageBuffer.h>

#include <memory>
#include <string>

typedef struct _GCancellable GCancellable;
typedef struct _GDBusConnection GDBusConnection;
typedef struct _GVariant GVariant;

/// Announces a channel on the helper bus and receives the bus name of its partner in the service.
/// Threads: there are no locks, and no main loop is needed; use an instance from one thread at a time. Every
/// call except ConnectAsync blocks the calling thread for at most 2000 ms. The constructor and
/// CheckConnection connect to the bus; if the bus accepts the connection, they also take at most 2000 ms.
/// ZVGetLastFailure() says why a call failed.
class ZVIPTV_API CConnectionHelperDBusClient
{
public:
    static char const* const BUSNAME; ///< well-known name of the helper bus
    static char const* const METHOD;  ///< its only method, "SendSignal"

    /// Attaches to the system bus. Without a bus the object stays usable and every send fails.
    CConnectionHelperDBusClient();

    /// Uses the caller's connection to a message bus. With a null connection, every send fails.
    explicit CConnectionHelperDBusClient(GDBusConnection* connection);

    /// Releases the bus connection; announces nothing.
    virtual ~CConnectionHelperDBusClient();

    CConnectionHelperDBusClient(CConnectionHelperDBusClient const&) = delete;
    CConnectionHelperDBusClient& operator=(CConnectionHelperDBusClient const&) = delete;

    /// Returns true if the helper bus has an owner, that is, if the service runs; false without a bus. Opens
    /// a separate connection and closes it again.
    static bool CheckConnection();

    /// Announces the channel `dbusname` of the given type word; returns the bus name of the endpoint to
    /// connect to, or an empty text if the exchange failed or the service named no endpoint.
    std::string Connect(std::string dbusname, std::string type);

    /// Announces a channel as Connect does, without waiting. `completion` runs once, through the main context
    /// that is the calling thread's default, with the bus name of the endpoint. If the exchange failed, the
    /// name is empty, and ZVGetLastFailure() says why until `completion` returns; it is ZV_FAILURE_NONE if
    /// the service named no endpoint or if `cancellable`, which may be null, was cancelled. Returns false,
    /// and does not run `completion`, without a connection and for a name that is not UTF-8. The object may
    /// be destroyed before `completion` runs.
    bool ConnectAsync(std::string dbusname, std::string type, GCancellable* cancellable,
                      void (*completion)(std::string const& partner, void* userData), void* userData);

    /// Announces the end of the channel; the outcome is ignored.
    void Disconnect(std::string dbusname, std::string type);

    /// Makes one blocking "SendSignal" call. On success, `reply` is replaced by the answer; on failure, it is
    /// unchanged.
    bool m_SendMessage(CMessageBuffer& request, CMessageBuffer& reply);

    /// Decodes a helper-bus message, "(a(ss))"; returns an empty buffer for null or any other type.
    CMessageBuffer m_ConvertMsg(GVariant* message);

    /// Encodes a helper-bus message as a new floating "(a(ss))"; values are cut at their first zero byte.
    /// Returns null if a key or a value is not UTF-8, or the message is larger than
    /// CProxyDBusHelper::MAX_BODY_SIZE.
    GVariant* m_ConvertMsg(CMessageBuffer& message);

private:
    std::shared_ptr<GDBusConnection> m_pConnection;
};
