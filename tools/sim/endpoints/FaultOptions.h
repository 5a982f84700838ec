// SPDX-License-Identifier: MIT
#pragma once

#include "FaultRule.h"

#include <charconv>
#include <optional>
#include <string>
#include <vector>

namespace zviptv::sim {

/// Reads OPTION=VALUE[,OPTION=VALUE]... into the rule, whose function and fault are known.
/// @throws std::invalid_argument with the error and the accepted values
void ReadFaultOptions(std::string const& text, FaultRule& rule);

/// ",OPTION=VALUE" for each option that does not have its default value.
std::string FaultOptionsText(FaultRule const& rule);

/// "count=N, for=SECONDS or ...".
std::string AcceptedFaultOptions();

/// The text as a number in the range; nullopt if it is not one.
template <typename Number>
std::optional<Number> ReadNumber(std::string const& text, Number least, Number most)
{
    Number number{};
    auto const [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    bool const isTaken = failure == std::errc() && end == text.data() + text.size() && number >= least &&
                         number <= most; // NaN is in no range
    return isTaken ? std::optional<Number>(number) : std::nullopt;
}

/// "one, two or three".
std::string OneOf(std::vector<std::string> const& words);

} // namespace zviptv::sim
