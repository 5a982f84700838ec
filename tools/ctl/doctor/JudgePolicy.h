// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

namespace zviptv::ctl::doctor {

Finding JudgeAccounts(Facts const& facts);
Finding JudgePolicy(Facts const& facts);
Finding JudgeGroup(Facts const& facts);

} // namespace zviptv::ctl::doctor
