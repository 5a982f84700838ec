// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <functional>
#include <stdexcept>

namespace zviptv::sim {

/// The errors in a scenario, one line for each, which begins with FILE:LINE:COLUMN.
class ScenarioError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Callbacks to read a scenario: the parser itself does not know files or verbs.
struct ScenarioSource
{
    /// The content of a file. @throws std::runtime_error with the reason
    std::function<std::string(std::string const& path)> read;

    /// Checks a verb and its arguments, and resolves paths relative to the file's folder.
    /// @throws LineError
    std::function<void(std::vector<Word>& verb, std::string const& folder)> check;
};

/// Reads a scenario and the files that it includes.
/// @throws ScenarioError with all errors, or with the first 100 and a line about that
Scenario ParseScenario(std::string const& file, ScenarioSource const& source);

} // namespace zviptv::sim
