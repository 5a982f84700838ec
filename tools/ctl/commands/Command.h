// SPDX-License-Identifier: MIT
#pragma once

#include "Arguments.h"
#include "output/Answer.h"

#include <string>
#include <vector>

namespace zviptv::ctl {

class Session;
struct Command;

/// The arguments that were given to a command.
class CommandArguments
{
public:
    CommandArguments(Command const& command, std::vector<std::string> texts);

    /// The argument at `index`, from 0. Throws a Failure if it is not such a value.
    template <typename Value>
    Value Get(std::size_t index) const
    {
        return ParseArgument<Value>(m_texts.at(index), PlaceOf(index));
    }

private:
    ArgumentPlace PlaceOf(std::size_t index) const;

    Command const& m_command;
    std::vector<std::string> m_texts;
};

struct CommandArgument
{
    char const* name;
    char const* help;
};

/// A command for people, which makes one or several calls of the interface.
struct Command
{
    char const* group; ///< the word before the name; empty for a command without a group
    char const* name;
    std::vector<CommandArgument> arguments;
    char const* help;
    Answer (*run)(Session& session, CommandArguments const& arguments);

    /// "audio select"
    std::string FullName() const;
};

constexpr char PlaybackHint[] = "'zviptvctl status' shows whether it plays";

/// The answer of a command that changes something: what it `did`, or that the service refused its `wish`, and
/// the `next` step.
Answer Done(bool accepted, std::string const& did, std::string const& wish, std::string const& next);

/// The answer of a command if the service refused its first call.
Answer Refused(std::string const& wish, std::string const& next = PlaybackHint);

} // namespace zviptv::ctl
