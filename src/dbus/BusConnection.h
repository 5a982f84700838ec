// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <string>

namespace zviptv {

/// Where the system bus is, by DBUS_SYSTEM_BUS_ADDRESS at this moment. Empty where nothing is known.
std::string SystemBusAddress();

/// The process's connection to the system bus, on which all objects of the library are.
///
/// It is the one that GIO shares within the process. When that one's bus has died and a bus is there again,
/// it is a private connection of the library, which ends when nothing of the library is on it. While there is
/// no bus, the dead connection stays: everything on it fails.
///
/// Each connection takes the exit-on-close setting over from the one before. If the application has switched
/// exit-on-close off, it stays off, also when there was no connection meanwhile.
///
/// Null, with `error`, if the process never had a connection and cannot have one: a bus that accepts
/// connections and does not answer is given up after 2 s. Any thread may call it.
Owned<GDBusConnection> SystemBus(Error& error);

/// Whether the bus is at the other end.
bool IsAlive(Owned<GDBusConnection> const& connection);

/// False for a connection that SystemBus() has replaced, or does so now, because its bus has died and is
/// there again. What is on it is lost, and its unique name may by now be another process's.
bool IsPresent(Owned<GDBusConnection> const& connection);

} // namespace zviptv
