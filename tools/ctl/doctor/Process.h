// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

/// Reads from /proc the facts about the process that owns the name.
void LookUpProcess(ServiceFacts& service);

} // namespace zviptv::ctl::doctor
