// SPDX-License-Identifier: MIT
#pragma once

#include "Handles.h"
#include "WireAnswer.h"
#include "WirePeer.h"

namespace zviptv::test {

/// Messages from plain data. All throw std::invalid_argument for names that libdbus would refuse.
MessageHandle NewCall(WireTarget const& target, WireBody const& body, bool noAutoStart, bool noReply);
MessageHandle NewSignal(WireTarget const& target, WireBody const& body);
/// The answer to a call; null for Kind::Nothing.
MessageHandle NewAnswer(DBusMessage* call, WireAnswer const& answer);

/// Puts the message into the connection's queue and returns its serial, or 0 if the connection is gone.
std::uint32_t SendNow(DBusConnection* connection, DBusMessage* message);

} // namespace zviptv::test
