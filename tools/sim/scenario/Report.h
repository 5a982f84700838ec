// SPDX-License-Identifier: MIT
#pragma once

#include "Play.h"

#include <string>

namespace zviptv::sim {

/// The outcomes of expectations, refused verbs and steps that did not run: a heading and one line for each.
/// Empty if there are none.
std::string TextReport(Play const& play);

/// The same as JUnit XML: a test case for each expectation, and an error for each verb that was refused.
/// `seconds`: the scenario time at its end.
std::string JUnitReport(Play const& play, double seconds);

} // namespace zviptv::sim
