// SPDX-License-Identifier: MIT
#pragma once

#include "output/Answer.h"
#include "session/Session.h"

#include <functional>
#include <string>

namespace zviptv::ctl {

/// The options of every command; runs commands with them.
struct Invocation
{
    bool asJson = false;
    bool echoLog = false;
    std::string profile = "1";
    std::string id = "0";

    /// The handle that the options select. Redirects the library's log as they request. Throws a Failure if
    /// the handle is invalid.
    Handle Apply() const;

    /// Runs a command that needs a session and prints its output itself.
    ExitCode RunWith(std::function<ExitCode(Session& session)> const& command) const;

    /// Runs a command that needs a session, and prints the answer.
    ExitCode AnswerWith(std::function<Answer(Session& session)> const& command) const;

    /// Runs a command, and prints the Failure that ends it; also as JSON if the command prints exactly one
    /// object.
    ExitCode Perform(std::function<ExitCode()> const& command, bool answersOnce) const;
};

/// Writes a line to standard error.
void PrintMessage(std::string const& text);

} // namespace zviptv::ctl
