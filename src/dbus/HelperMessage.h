// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv::helper {

/// The name, the interface and the path of the helper bus, which share one stem.
constexpr char BusName[] = "org.corvel.zviptvapi.dbushelper";
constexpr char ObjectPath[] = "/org/corvel/zviptvapi/dbushelper";
constexpr char Interface[] = "org.corvel.zviptvapi.dbushelper";
constexpr char Method[] = "SendSignal";

/// Encodes a helper-bus message as a floating "(a(ss))", with each value cut at its first zero byte. Returns
/// null, with `error` set, if a key or a value is not UTF-8, or the message is larger than the bus accepts.
GVariant* Encode(CMessageBuffer const& message, Error& error);

/// Decodes the pairs of a helper-bus message to text entries; returns an empty buffer for null or any other
/// type.
CMessageBuffer Decode(GVariant* message);

} // namespace zviptv::helper
