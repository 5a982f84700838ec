// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

namespace zviptv::ctl::doctor {

Finding JudgeProtocol(Facts const& facts);
Finding JudgeVersion(Facts const& facts);

} // namespace zviptv::ctl::doctor
