// SPDX-License-Identifier: MIT
#pragma once

#include "output/Answer.h"
#include "session/Session.h"

#include <functional>
#include <string>

namespace zviptv::ctl {

/// The options that every command has, and how commands run with them.
struct Invocation
{
    bool asJson = false;
    bool echoLog = false;
    std::string profile = "1";
    std::string id = "0";

    /// What the options select. Sends the library's log where they say. Throws a Failure for what is no
    /// handle.
    Handle Apply() const;

    /// Runs a command that needs a session, and writes by itself.
    ExitCode RunWith(std::function<ExitCode(Session& session)> const& command) const;

    /// Runs a command that needs a session, and prints its answer.
    ExitCode AnswerWith(std::function<Answer(Session& session)> const& command) const;

    /// Runs a command, and prints the Failure that ends it: as JSON, too, if the command writes one object
    /// and no others.
    ExitCode Perform(std::function<ExitCode()> const& command, bool answersOnce) const;
};

/// Writes a line to standard error.
void Say(std::string const& text);

} // namespace zviptv::ctl
