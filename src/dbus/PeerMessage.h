// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv {

/// Body of a peer-channel message: the one argument "(a{sv})", each value an "ay" of exactly the entry's
/// bytes. Null, with `error` set, when a key is not UTF-8 or the body is larger than the bus carries.
Owned<GVariant> EncodePeerMessage(CMessageBuffer const& message, Error& error);

/// Appends the entries of `body` to `message`, but for those with no bytes and those that are no "ay". False,
/// with `error` set, when the body is not of type "(a{sv})".
bool DecodePeerMessage(GVariant* body, CMessageBuffer& message, Error& error);

} // namespace zviptv
