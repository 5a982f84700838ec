// SPDX-License-Identifier: MIT
#pragma once

#include "CommandLine.h"
#include "session/ServiceWatch.h"
#include "session/Session.h"

#include <istream>
#include <optional>
#include <string>

namespace zviptv::ctl {

/// The command `batch`: runs one command per line in one session, and answers each with a line of JSON.
class Batch
{
public:
    /// `options` apply to all commands.
    explicit Batch(Invocation const& options) : m_options(options) {}

    /// Runs until the end of the input, or until the answers are no longer read. Returns the exit code of the
    /// first command that failed.
    ExitCode Run(std::istream& input);

private:
    struct Outcome
    {
        ExitCode code;
        Json::Value json;
    };

    Outcome Perform(std::vector<std::string> const& words);
    Answer Ask(CommandLine::Question const& question);
    Session& SessionFor(Handle const& handle);

    Invocation const m_options;
    CommandLine m_commands;
    std::optional<Session> m_session;
    std::optional<ServiceWatch> m_watch; ///< of the session's service
    bool m_isLost = false;               ///< the session's objects belong to a service that has left
};

} // namespace zviptv::ctl
