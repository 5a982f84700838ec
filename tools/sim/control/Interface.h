// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

namespace zviptv::sim {

/// The description of the control interface, which gdbus-codegen generates from its XML file. It is valid for
/// the life of the program.
GDBusInterfaceInfo* SimulatorInterface();

} // namespace zviptv::sim
