// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <chrono>

namespace zviptv {

/// What is called, and how.
struct MethodTarget
{
    char const* destination;
    char const* path;
    char const* interface;
    char const* method;
    GDBusMessageFlags flags = G_DBUS_MESSAGE_FLAGS_NONE;
};

/// Calls a method and waits for its answer, from any thread. Null, with GIO's errors, when there is none:
/// G_IO_ERROR_TIMED_OUT after `timeout`, G_IO_ERROR_CLOSED within 25 ms of the end of the connection, or the
/// error that was answered.
///
/// Only messages of the callee or of the bus count as answers. Whose well-known name is called may answer
/// under any unique one; serials that strangers cannot guess stand in for the check.
///
/// The answer is taken on GIO's worker thread, which saves the calling thread the main context that GIO's own
/// synchronous calls make for each call, and the descriptors that one needs.
Owned<GVariant> CallAndWait(GDBusConnection* connection, MethodTarget const& target, GVariant* body,
                            std::chrono::milliseconds timeout, Error& error);

} // namespace zviptv
