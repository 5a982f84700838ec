// SPDX-License-Identifier: MIT
#pragma once

#include "Pattern.h"

#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// A place in a scenario.
struct Place
{
    std::string file;
    unsigned line = 0;
    unsigned column = 0;
};

/// "film.scenario:3:7"
std::string ToText(Place const& place);

/// An expected behaviour of an application.
struct Expectation
{
    Pattern request;
    bool isWanted = true; ///< the request must arrive; otherwise it must not
    double seconds = 0;   ///< time limit
};

/// A line: a verb or an expectation, at a time or after a request.
struct Step
{
    Place place;
    std::string text;             ///< the line, without its comment
    double second = 0;            ///< time of a step without a trigger
    std::optional<Pattern> after; ///< the request after which it runs
    std::optional<Expectation> expectation;
    std::vector<std::string> verb; ///< verb and arguments of a step without an expectation
};

struct Scenario
{
    std::string file;
    std::vector<Step> steps; ///< in the order of the lines, with included files in place
};

} // namespace zviptv::sim
