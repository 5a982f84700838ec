#pragma once

#include "dbus/GLibHandles.h"

#include <string>

namespace zviptv {

/// Where the system bus is, by DBUS_SYSTEM_BUS_ADDRESS at this moment. Empty where nothing is known.
std::string SystemBusAddress();

} // namespace zviptv
