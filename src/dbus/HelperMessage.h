// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv::helper {

/// Where the helper bus lives. Its name, interface and path share one stem.
constexpr char BusName[] = "org.corvel.zviptvapi.dbushelper";
constexpr char ObjectPath[] = "/org/corvel/zviptvapi/dbushelper";
constexpr char Interface[] = "org.corvel.zviptvapi.dbushelper";
constexpr char Method[] = "SendSignal";

/// A helper-bus message, "(a(ss))", each value cut at its first zero byte; floating. Null, with `error` set,
/// when a key or a value is not UTF-8 or the message is larger than the bus carries.
GVariant* Encode(CMessageBuffer const& message, Error& error);

/// The pairs of a helper-bus message as text entries; an empty buffer for null or any other type.
CMessageBuffer Decode(GVariant* message);

} // namespace zviptv::helper
