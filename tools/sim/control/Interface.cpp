// SPDX-License-Identifier: MIT
#include "Interface.h"

#include "SimulatorInterface.h"

namespace zviptv::sim {

GDBusInterfaceInfo* SimulatorInterface()
{
    // A static description, which GLib does not change.
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast)
    return const_cast<GDBusInterfaceInfo*>(&org_corvel_zviptvapi_simulator1_interface);
}

} // namespace zviptv::sim
