// SPDX-License-Identifier: MIT
/// @file
/// The helper bus, as a service sees it.

#pragma once

#include <zviptv/Export.h>

#include <string>

/// The service's side of the helper bus: every proxy of every application announces itself here when it comes
/// up and when it goes away. Obtained from CIPTVServiceAPI::CreateConnectionHelper.
///
/// Lifetime: a pointer to the object is valid for the life of the process. While the object is destroyed, a
/// call on it does nothing, from any thread, and ZVGetLastFailure() says why; after the next Create the
/// pointer works again.
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
    /// "BROADCASTDATA", "IPTVDATASUBSCRIBER" or "IPGUTIL"), `add` is "y" when it comes up and "n" when it
    /// goes away; a text the announcement left out is empty. The handler returns the bus name of the endpoint
    /// that the channel is to connect to (UTF-8); for "n" the answer is ignored. It may take the answer with
    /// CDeferredReply::Take() and give it later.
    ///
    /// Threads: the handler runs on the thread that iterates the main context which was the thread default
    /// where the connection helper was created, and the announcing application waits for it (2000 ms at
    /// most). Install it before the first announcement can arrive. An exception that leaves the handler
    /// passes through GLib and leaves the announcement unanswered.
    virtual void SetDbusSignalCb(std::string (*cb)(std::string dbusname, std::string type, std::string add,
                                                   void* userData),
                                 void* userData) = 0;

protected:
    IConnectionHelper() = default;
};
