// SPDX-License-Identifier: MIT
#pragma once

#include <gio/gio.h>

namespace zviptv::sim {

/// The description of the control interface, which gdbus-codegen makes from its XML file. It lives as long as
/// the program.
GDBusInterfaceInfo* SimulatorInterface();

} // namespace zviptv::sim
