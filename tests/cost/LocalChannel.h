#pragma once

#include "dbus/GLibHandles.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv::test {

// LocalChannel.cpp stands in for the channel and for the helper bus, so that a call takes its whole way
// through the library and none through a bus: the request is encoded, and what SetReply has put in place is
// decoded.

/// The service's answer to every request from now on.
void SetReply(CMessageBuffer const& reply);

/// The service sends a notification to the channel that was made last. It is decoded as the channel does.
void Notify(GVariant* body);

/// The body of a message as a receiver gets it: put on the wire and read from it by GIO.
Owned<GVariant> Arrived(GVariant* body);

} // namespace zviptv::test
