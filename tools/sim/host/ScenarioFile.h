// SPDX-License-Identifier: MIT
#pragma once

#include "Options.h"
#include "ScenarioRunner.h"

#include <string>

namespace zviptv::sim {

/// Reads a scenario and checks everything that can be checked before it runs, including its verbs, faults and
/// inputs.
/// @throws ScenarioError
Scenario LoadScenario(std::string const& file);

/// The same of a text. `file` need not exist: messages name it, and other files are relative to its folder.
/// @throws ScenarioError
Scenario LoadScenarioText(std::string const& text, std::string const& file);

/// Checks a verb of a scenario in that folder, and makes an input relative to it. @throws LineError
void CheckVerb(std::vector<Word>& verb, std::string const& folder);

/// Reads the scenario of the options, if there is one, and opens the file for its report.
/// @throws ScenarioError
ScenarioOptions PrepareScenario(Options const& options);

} // namespace zviptv::sim
