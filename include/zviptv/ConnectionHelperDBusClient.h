// SPDX-License-Identifier: MIT
/// @file
/// How a channel finds its partner in the service.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/MessageBuffer.h>

#include <memory>
#include <string>

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GVariant GVariant;

/// Announces a channel on the helper bus and learns the bus name of its partner in the service.
///
/// Threads: no locks, no main loop needed; one instance belongs to one thread at a time. Every call blocks
/// the calling thread for at most 2000 ms once the process is connected to the bus; connecting, in the
/// constructor and in CheckConnection, takes as long as the bus takes. ZVGetLastFailure() says why one
/// failed.
class ZVIPTV_API CConnectionHelperDBusClient
{
public:
    static char const* const BUSNAME; ///< well-known name of the helper bus
    static char const* const METHOD;  ///< its one method, "SendSignal"

    /// Attaches to the system bus. Without a bus the object stays usable and every send fails.
    CConnectionHelperDBusClient();

    /// Lets go of the bus; announces nothing.
    virtual ~CConnectionHelperDBusClient();

    CConnectionHelperDBusClient(CConnectionHelperDBusClient const&) = delete;
    CConnectionHelperDBusClient& operator=(CConnectionHelperDBusClient const&) = delete;

    /// True when the helper bus has an owner, that is when the service runs. False without a bus. Opens
    /// a connection of its own and closes it again.
    static bool CheckConnection();

    /// Announces the channel `dbusname` of the given type word; returns the bus name of the endpoint to
    /// connect to, empty when the exchange failed or the service gave none.
    std::string Connect(std::string dbusname, std::string type);

    /// Announces that the channel goes away; the outcome is ignored.
    void Disconnect(std::string dbusname, std::string type);

    /// One blocking "SendSignal" call. On success `reply` is replaced by the answer; on failure it is
    /// unchanged.
    bool m_SendMessage(CMessageBuffer& request, CMessageBuffer& reply);

    /// Decodes a helper-bus message, "(a(ss))"; an empty buffer for null or any other type.
    CMessageBuffer m_ConvertMsg(GVariant* message);

    /// Encodes a helper-bus message as a new floating "(a(ss))"; values are cut at their first zero byte.
    /// Null when a key or a value is not UTF-8, or the message is over CProxyDBusHelper::MAX_BODY_SIZE.
    GVariant* m_ConvertMsg(CMessageBuffer& message);

private:
    std::shared_ptr<GDBusConnection> m_pConnection;
};
