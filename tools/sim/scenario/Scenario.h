// SPDX-License-Identifier: MIT
#pragma once

#include "Pattern.h"

#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// Where something stands in a scenario.
struct Place
{
    std::string file;
    unsigned line = 0;
    unsigned column = 0;
};

/// "film.scenario:3:7"
std::string ToText(Place const& place);

/// What an application is expected to do.
struct Expectation
{
    Pattern request;
    bool isWanted = true; ///< it shall come; else it shall not
    double seconds = 0;   ///< in this time
};

/// What a line says: at a time, or after a request, a verb or an expectation.
struct Step
{
    Place place;
    std::string text;             ///< the line, without its comment
    double second = 0;            ///< of a step that has no trigger
    std::optional<Pattern> after; ///< the request after which it runs
    std::optional<Expectation> expectation;
    std::vector<std::string> verb; ///< with its arguments, of a step without an expectation
};

struct Scenario
{
    std::string file;
    std::vector<Step> steps; ///< in the order of the lines, those of included files in their place
};

} // namespace zviptv::sim
