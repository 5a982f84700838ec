// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/BusProbe.h"
#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// Asks the bus for the owner of the service's name, the owner for an answer, and then for its endpoints.
void ProbeService(BusProbe& bus, ServiceFacts& service);

} // namespace zviptv::ctl::doctor
