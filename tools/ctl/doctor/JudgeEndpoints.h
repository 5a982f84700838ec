// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Finding.h"

namespace zviptv::ctl::doctor {

/// Whether the helper bus names an endpoint for each type word.
Finding JudgeEndpoints(Facts const& facts);

/// Whether the endpoints answer requests.
Finding JudgeRequests(Facts const& facts);

} // namespace zviptv::ctl::doctor
