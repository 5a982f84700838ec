// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <string>

namespace zviptv {

/// The address of the system bus, by the present value of DBUS_SYSTEM_BUS_ADDRESS. Empty if it is unknown.
std::string SystemBusAddress();

/// The process's connection to the system bus, which all objects of the library use.
/// It is the connection that GIO shares within the process. After the bus has died and a bus is available
/// again, it is a private connection of the library, which closes when no object of the library uses it.
/// While there is no bus, the dead connection is kept, and everything on it fails.
/// Each connection inherits the exit-on-close setting of the previous one. If the application has switched
/// exit-on-close off, it stays off, even if there was no connection in between.
/// Returns null, with `error`, if the process never had a connection and cannot get one. If a bus accepts
/// connections but does not answer, it gives up after 2 s. Any thread may call it.
Owned<GDBusConnection> SystemBus(Error& error);

/// Whether the connection to the bus is open.
bool IsAlive(Owned<GDBusConnection> const& connection);

/// Returns false for a connection that SystemBus() has replaced, or replaces now, because its bus has died
/// and a bus is available again. Objects on it are lost, and its unique name may now belong to another
/// process.
bool IsPresent(Owned<GDBusConnection> const& connection);

} // namespace zviptv
