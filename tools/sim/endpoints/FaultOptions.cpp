// SPDX-License-Identifier: MIT
#include "FaultOptions.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <stdexcept>

namespace zviptv::sim {

namespace {

/// Reads the value of an option. Returns false if it is not accepted.
using Read = bool (*)(std::string const& value, FaultRule& rule);

struct Option
{
    char const* name;
    char const* value;
    char const* accepted;
    Read read;
};

constexpr std::uint32_t MaxMessages = 1000000;
constexpr double MinSeconds = 0.001;
constexpr double MaxSeconds = 1000000;

bool ReadCount(std::string const& value, FaultRule& rule)
{
    rule.count = ReadNumber<std::uint32_t>(value, 1, MaxMessages);
    return rule.count.has_value();
}

bool ReadDuration(std::string const& value, FaultRule& rule)
{
    rule.duration = ReadNumber<double>(value, MinSeconds, MaxSeconds);
    return rule.duration.has_value();
}

bool ReadFrom(std::string const& value, FaultRule& rule)
{
    std::optional<double> const seconds = ReadNumber<double>(value, 0, MaxSeconds);
    rule.from = seconds.value_or(0) + 0.0; // not -0
    return seconds.has_value();
}

bool ReadApplication(std::string const& value, FaultRule& rule)
{
    rule.application = value;
    return !value.empty();
}

bool ReadProbability(std::string const& value, FaultRule& rule)
{
    std::optional<double> const probability = ReadNumber<double>(value, 0, 1);
    rule.probability = probability.value_or(1) + 0.0;
    return probability.has_value();
}

bool ReadEffect(std::string const& value, FaultRule& rule)
{
    rule.takesEffect = value != "no";
    return value == "no" || value == "yes";
}

constexpr Option Options[] = {
    {"count", "N", "a number of messages, 1 to 1000000", ReadCount},
    {"for", "SECONDS", "a number of seconds, 0.001 to 1000000", ReadDuration},
    {"from", "SECONDS", "a number of seconds, 0 to 1000000", ReadFrom},
    {"application", "NAME", "the bus name or the id of an application", ReadApplication},
    {"probability", "P", "a probability, 0 to 1", ReadProbability},
    {"effect", "yes|no", "yes or no", ReadEffect},
};

std::string Shortest(double number)
{
    char text[32];
    auto const end = std::to_chars(std::begin(text), std::end(text), number).ptr;
    return std::string(text, end);
}

void ReadFaultOption(std::string const& text, FaultRule& rule, std::set<std::string>& seen)
{
    std::size_t const equals = text.find('=');
    std::string const name = text.substr(0, equals);
    auto const* const option = std::find_if(std::begin(Options), std::end(Options),
                                            [&name](Option const& known) { return name == known.name; });
    if (option == std::end(Options) || equals == std::string::npos) {
        throw std::invalid_argument("unknown option '" + text + "'; use " + AcceptedFaultOptions());
    }
    if (!seen.insert(name).second) {
        throw std::invalid_argument(name + " is given more than once; give it once");
    }
    std::string const value = text.substr(equals + 1);
    if (!option->read(value, rule)) {
        throw std::invalid_argument("'" + value + "' is not " + option->accepted);
    }
    if (name == "effect" && rule.target == FaultRule::Target::Push) {
        throw std::invalid_argument(rule.function +
                                    " does not accept the option effect; use effect for requests, "
                                    "or use PESCB=drop or CaptionCB=drop");
    }
}

} // namespace

void ReadFaultOptions(std::string const& text, FaultRule& rule)
{
    std::set<std::string> seen;
    for (std::size_t begin = 0; begin != std::string::npos;) {
        std::size_t const comma = text.find(',', begin);
        ReadFaultOption(text.substr(begin, comma == std::string::npos ? comma : comma - begin), rule, seen);
        begin = comma == std::string::npos ? comma : comma + 1;
    }
}

std::string AcceptedFaultOptions()
{
    std::vector<std::string> options;
    for (Option const& option : Options) {
        options.push_back(std::string(option.name) + "=" + option.value);
    }
    return OneOf(options);
}

std::string FaultOptionsText(FaultRule const& rule)
{
    return (rule.count ? ",count=" + std::to_string(*rule.count) : "") +
           (rule.duration ? ",for=" + Shortest(*rule.duration) : "") +
           (rule.from > 0 ? ",from=" + Shortest(rule.from) : "") +
           (rule.application.empty() ? "" : ",application=" + rule.application) +
           (rule.probability < 1 ? ",probability=" + Shortest(rule.probability) : "") +
           (rule.takesEffect ? "" : ",effect=no");
}

std::string OneOf(std::vector<std::string> const& words)
{
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i) {
        text += (i == 0 ? "" : i + 1 == words.size() ? " or " : ", ") + words[i];
    }
    return text;
}

} // namespace zviptv::sim
