// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/BusProbe.h"
#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// Determines, with two connections of the doctor, what the bus allows this user. As root, it also tries what
/// the bus allows the service's user.
void ProbePolicy(BusProbe& from, Facts& facts);

} // namespace zviptv::ctl::doctor
