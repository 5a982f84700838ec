// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/BusProbe.h"
#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// Queries the bus for the owner of the service's name, calls the owner, and then queries its endpoints.
void ProbeService(BusProbe& bus, ServiceFacts& service);

} // namespace zviptv::ctl::doctor
