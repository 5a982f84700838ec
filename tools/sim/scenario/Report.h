// SPDX-License-Identifier: MIT
#pragma once

#include "Play.h"

#include <string>

namespace zviptv::sim {

/// What became of each expectation, of verbs that were refused and of steps that did not run: a line each,
/// below a heading. Empty when there is none of them.
std::string TextReport(Play const& play);

/// The same as JUnit XML: a test case for each expectation, and an error for each verb that was refused.
/// `seconds`: the scenario time at its end.
std::string JUnitReport(Play const& play, double seconds);

} // namespace zviptv::sim
