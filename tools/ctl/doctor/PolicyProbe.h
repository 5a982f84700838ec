// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/BusProbe.h"
#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// What the bus lets this user do, found out on two connections of the doctor's own. Root also tries what the
/// service's user may do.
void ProbePolicy(BusProbe& from, Facts& facts);

} // namespace zviptv::ctl::doctor
