// SPDX-License-Identifier: MIT
#pragma once

#include "Scenario.h"

#include <functional>
#include <stdexcept>

namespace zviptv::sim {

/// What is wrong with a scenario: a line for each problem, FILE:LINE:COLUMN first.
class ScenarioError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// What a scenario needs to be read: nothing here knows files or verbs.
struct ScenarioSource
{
    /// The content of a file. @throws std::runtime_error with the reason
    std::function<std::string(std::string const& path)> read;

    /// Checks a verb and its arguments, and makes those paths that are relative to the file's folder.
    /// @throws LineError
    std::function<void(std::vector<Word>& verb, std::string const& folder)> check;
};

/// Reads a scenario and the files that it includes.
/// @throws ScenarioError with all errors, or with the first 100 and a line about that
Scenario ParseScenario(std::string const& file, ScenarioSource const& source);

} // namespace zviptv::sim
