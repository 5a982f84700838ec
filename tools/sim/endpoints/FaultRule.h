// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zviptv::sim {

/// What can go wrong with a kind of message, and when: one fault, as it is written on the command line.
struct FaultRule
{
    /// The kinds of messages.
    enum class Target : unsigned
    {
        Answer = 1,      ///< to a request
        Push = 2,        ///< PESCB and CaptionCB
        Announcement = 4 ///< the answer on the helper bus
    };

    enum class Kind
    {
        Delay,     ///< comes late
        Drop,      ///< does not come
        Error,     ///< a D-Bus error comes instead
        Result,    ///< comes with another result
        Missing,   ///< comes without a key
        Garbage,   ///< comes with letters for a value
        Short,     ///< comes with half a value
        Empty,     ///< names no endpoint
        Dead,      ///< names an endpoint that nobody owns
        Duplicate, ///< comes twice
        Reorder,   ///< comes after the next one
        Burst      ///< is held, and then comes together with others
    };

    static constexpr char AllRequests[] = "*";
    static constexpr char Announcement[] = "Announcement";

    Target target = Target::Answer;
    std::string function; ///< AllRequests, Announcement, or a "functionname"
    Kind kind = Kind::Drop;
    int number = 0;                     ///< milliseconds, result, or times the rate
    std::string key;                    ///< whose value is changed; may be empty
    std::optional<std::uint32_t> count; ///< messages until it ends
    std::optional<double> duration;     ///< seconds until it ends, from when it begins
    double from = 0;                    ///< seconds until it begins
    std::string application;            ///< bus name or id; empty for all
    double probability = 1;             ///< that it meets a message
    bool takesEffect = true;            ///< false: the request is not carried out

    /// Reads FUNCTION=FAULT[,OPTION=VALUE]..., which docs/reference/simulator.md describes.
    /// @throws std::invalid_argument with a line for the user, which says what is accepted
    static FaultRule Parse(std::string const& text);

    /// What Parse() accepts, in a sentence.
    static std::string Usage();

    /// The shortest text that is read as this rule.
    std::string Text() const;

    /// Text() without the options.
    std::string Name() const;
};

} // namespace zviptv::sim
