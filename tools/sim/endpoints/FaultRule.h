// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zviptv::sim {

/// One fault as on the command line: the kind of message, what goes wrong with it, and when.
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
        Delay,     ///< is sent late
        Drop,      ///< is not sent
        Error,     ///< is replaced by a D-Bus error
        Result,    ///< has another result
        Missing,   ///< does not have a key
        Garbage,   ///< has letters as a value
        Short,     ///< has only half a value
        Empty,     ///< names no endpoint
        Dead,      ///< names an endpoint that nobody owns
        Duplicate, ///< is sent twice
        Reorder,   ///< is sent after the next one
        Burst      ///< is held, and then sent together with others
    };

    static constexpr char AllRequests[] = "*";
    static constexpr char Announcement[] = "Announcement";

    Target target = Target::Answer;
    std::string function; ///< AllRequests, Announcement, or a "functionname"
    Kind kind = Kind::Drop;
    int number = 0;                     ///< milliseconds, result, or factor to the rate
    std::string key;                    ///< whose value is changed; may be empty
    std::optional<std::uint32_t> count; ///< messages until it ends
    std::optional<double> duration;     ///< seconds until it ends, from when it begins
    double from = 0;                    ///< seconds until it begins
    std::string application;            ///< bus name or id; empty for all
    double probability = 1;             ///< probability that it applies to a message
    bool takesEffect = true;            ///< false: the request is not carried out

    /// Reads FUNCTION=FAULT[,OPTION=VALUE]..., which docs/reference/simulator.md describes.
    /// @throws std::invalid_argument with a line for the user, which lists the accepted values
    static FaultRule Parse(std::string const& text);

    /// The texts that Parse() accepts, in a sentence.
    static std::string Usage();

    /// The shortest text that is read as this rule.
    std::string Text() const;

    /// Text() without the options.
    std::string Name() const;
};

} // namespace zviptv::sim
