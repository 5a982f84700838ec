// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv {

/// Encodes the body of a peer-channel message: "(a{sv})", in which each value is an "ay" with exactly the
/// entry's bytes. Returns null, with `error` set, if a key is not UTF-8 or the body is larger than the bus
/// accepts.
Owned<GVariant> EncodePeerMessage(CMessageBuffer const& message, Error& error);

/// Appends the entries of `body` to `message`, except those without bytes and those that are not an "ay".
/// Returns false, with `error` set, if the body is not of type "(a{sv})".
bool DecodePeerMessage(GVariant* body, CMessageBuffer& message, Error& error);

} // namespace zviptv
