// SPDX-License-Identifier: MIT
#pragma once

#include "doctor/Facts.h"

namespace zviptv::ctl::doctor {

AccountFacts LookUpAccounts(Names const& names);
CallerFacts LookUpCaller(AccountFacts const& accounts);

/// "name", or "1234" for a user without one.
std::string UserName(unsigned id);

} // namespace zviptv::ctl::doctor
