// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

namespace zviptv::ctl::doctor {

Finding JudgeBus(Facts const& facts);

} // namespace zviptv::ctl::doctor
