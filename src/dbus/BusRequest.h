// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

namespace zviptv {

/// Calls a method of the bus itself without waiting for the answer, which is dropped. Consumes `arguments` if
/// it is floating. Does nothing on a closed connection. Needs no descriptor. Any thread may call it.
void SendToBus(GDBusConnection* connection, char const* method, GVariant* arguments);

} // namespace zviptv
