// SPDX-License-Identifier: MIT
#include "OptionChecks.h"

#include <cmath>

namespace zviptv::sim {

CLI::Validator Number(double least, double most, Fractions fractions, std::string const& words)
{
    return CLI::Validator(
        [=](std::string& text) {
            double number = 0;
            bool const isNumber =
                CLI::detail::lexical_cast(text, number) && number >= least && number <= most;
            bool const isTaken =
                isNumber && (fractions == Fractions::Allowed || number == std::floor(number));
            return isTaken ? std::string() : "'" + text + "' is not " + words;
        },
        "");
}

CLI::Validator WholeNumber(double least, double most, std::string const& words)
{
    return Number(least, most, Fractions::Refused, words);
}

CLI::Validator Seconds(double least)
{
    constexpr double Longest = 1000000;
    return Number(least, Longest, Fractions::Allowed,
                  "a number of seconds, " + std::string(least > 0 ? "0.001" : "0") + " to 1000000");
}

CLI::Validator IsNotEmpty()
{
    return CLI::Validator(
        [](std::string& text) { return std::string(text.empty() ? "the name of the file is empty" : ""); },
        "");
}

} // namespace zviptv::sim
