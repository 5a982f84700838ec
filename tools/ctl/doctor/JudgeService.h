// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

namespace zviptv::ctl::doctor {

Finding JudgeService(Facts const& facts);
Finding JudgeOwner(Facts const& facts);
Finding JudgeLoop(Facts const& facts);

} // namespace zviptv::ctl::doctor
