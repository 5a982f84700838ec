// SPDX-License-Identifier: MIT
/// @file
/// The service's side of the helper bus.

#pragma once

#include <zviptv/Export.h>

#include <string>

/// The service's side of the helper bus: every proxy of every application announces here that it has been
/// created, and that it is destroyed. Obtained from CIPTVServiceAPI::CreateConnectionHelper.
///
/// Lifetime: a pointer to the object is valid for the life of the process. After the object has been
/// destroyed, a call on it does nothing, on any thread, and ZVGetLastFailure() says why; after the next
/// Create the pointer works again.
class ZVIPTV_API IConnectionHelper
{
protected:
    /// Released with CIPTVServiceAPI::DestroyConnectionHelper only.
    virtual ~IConnectionHelper() = default;

public:
    IConnectionHelper(IConnectionHelper const&) = delete;
    IConnectionHelper& operator=(IConnectionHelper const&) = delete;

    /// Installs the announcement handler, replacing any earlier one; a null `cb` turns handling off.
    ///
    /// `dbusname` is the bus name of the announcing channel, `type` its type word ("PLAYERCONTROL",
    /// "BROADCASTDATA", "IPTVDATASUBSCRIBER" or "IPGUTIL"), `add` is "y" when the channel is created and "n"
    /// when it is destroyed; a text that the announcement does not contain is empty. The handler returns the
    /// bus name (UTF-8) of the endpoint that the channel should connect to; for "n", the answer is ignored.
    /// It may take the answer with CDeferredReply::Take() and send it later.
    /// Threads: the handler runs on the thread that iterates the main context that was the thread default
    /// when the connection helper was created. The announcing application waits for it (2000 ms at most).
    /// Install it before the first announcement can arrive. An exception that leaves the handler passes
    /// through GLib and leaves the announcement unanswered.
    virtual void SetDbusSignalCb(std::string (*cb)(std::string dbusname, std::string type, std::string add,
                                                   void* userData),
                                 void* userData) = 0;

protected:
    IConnectionHelper() = default;
};
