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

    /// The argument at `index`, from 0. Throws a Failure for what is no such value.
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

/// A command in the words of people, which makes one or several calls of the interface.
struct Command
{
    char const* group; ///< the word before the name; empty for a command that stands alone
    char const* name;
    std::vector<CommandArgument> arguments;
    char const* help;
    Answer (*run)(Session& session, CommandArguments const& arguments);

    /// "audio select"
    std::string FullName() const;
};

constexpr char WhetherItPlays[] = "'zviptvctl status' shows whether it plays";

/// The answer of a command that changes something: what it `did`, or that the service refused its `wish`, and
/// what `next` to look at.
Answer Done(bool accepted, std::string const& did, std::string const& wish, std::string const& next);

/// The answer of a command whose first call the service refused.
Answer Refused(std::string const& wish, std::string const& next = WhetherItPlays);

} // namespace zviptv::ctl
