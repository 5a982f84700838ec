// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace zviptv::sim {

// Checks of the values of options. What they refuse is named in the error that the user reads.

enum class Fractions
{
    Allowed,
    Refused
};

/// Accepts a number in the range; `words` describe the range.
CLI::Validator Number(double least, double most, Fractions fractions, std::string const& words);

CLI::Validator WholeNumber(double least, double most, std::string const& words);

/// Accepts a number of seconds up to 1000000, with fractions.
CLI::Validator Seconds(double least);

/// Accepts every name of a file but the empty one.
CLI::Validator IsNotEmpty();

} // namespace zviptv::sim
