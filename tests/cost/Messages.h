// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <zviptv/MessageBuffer.h>

#include <cstddef>

namespace zviptv::test {

/// A message of `entries` text entries "key0", "key1", …, each with a value of `size` letters.
CMessageBuffer MakeMessage(std::size_t entries, std::size_t size);

/// Encodes `message` for the peer channel or the helper bus; the body is owned, not floating.
Owned<GVariant> EncodeForPeer(CMessageBuffer const& message);
Owned<GVariant> EncodeForHelper(CMessageBuffer const& message);

/// Decodes a body of the peer channel or of the helper bus.
CMessageBuffer DecodeFromPeer(GVariant* body);
CMessageBuffer DecodeFromHelper(GVariant* body);

} // namespace zviptv::test
