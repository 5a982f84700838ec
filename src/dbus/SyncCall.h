// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <chrono>

namespace zviptv {

/// The method to call, and its parameters.
struct MethodTarget
{
    char const* destination;
    char const* path;
    char const* interface;
    char const* method;
    GDBusMessageFlags flags = G_DBUS_MESSAGE_FLAGS_NONE;
};

/// Calls a method and waits for its answer, on any thread. Without an answer, it returns null with an error
/// of GIO: G_IO_ERROR_TIMED_OUT after `timeout`, G_IO_ERROR_CLOSED within 25 ms after the end of the
/// connection, or the error in the answer.
/// Only messages of the callee or of the bus count as answers. If a well-known name is called, the answer may
/// come from any unique name; serials that strangers cannot guess replace the check.
/// The answer is received on GIO's worker thread. Therefore the calling thread does not need a main context
/// and its descriptors, which GIO's synchronous calls make for each call.
Owned<GVariant> CallAndWait(GDBusConnection* connection, MethodTarget const& target, GVariant* body,
                            std::chrono::milliseconds timeout, Error& error);

} // namespace zviptv
