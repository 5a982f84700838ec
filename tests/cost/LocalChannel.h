// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv::test {

// LocalChannel.cpp stands in for the partner's proxy and for the helper bus, so that a call takes its whole
// way through the library and none through a bus: the request is encoded, and what SetReply has put in place
// is decoded.

/// The service's answer to every request from now on.
void SetReply(CMessageBuffer const& reply);

/// The service sends a notification to the channel whose callbacks were set last.
void Notify(GVariant* body);

/// The bytes of a message.
struct Wire
{
    Owned<unsigned char> bytes;
    gsize size;
};

Wire ToWire(GVariant* body);
Owned<GVariant> FromWire(Wire const& wire);

/// The body of a received message: GIO has written and read its bytes.
Owned<GVariant> Arrived(GVariant* body);

} // namespace zviptv::test
