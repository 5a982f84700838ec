// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

namespace zviptv {

/// Calls a method of the bus itself and does not wait for the answer, which is dropped. Consumes `arguments`
/// if it is floating. On a closed connection nothing happens. Needs no descriptor. Any thread may call it.
void TellTheBus(GDBusConnection* connection, char const* method, GVariant* arguments);

} // namespace zviptv
