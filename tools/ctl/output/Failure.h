// SPDX-License-Identifier: MIT
#pragma once

#include <stdexcept>
#include <string>

namespace zviptv::ctl {

/// The exit codes of zviptvctl.
enum class ExitCode
{
    Accepted = 0,   ///< the service accepted, or the command ran to its end
    Refused = 1,    ///< the service answered with the result "false"
    Usage = 2,      ///< the command line is invalid
    NoService = 3,  ///< there is no bus or no service, or it went away
    NoAnswer = 4,   ///< time-out, or the bus reported an error
    Malformed = 5,  ///< the service sent an answer that cannot be read
    CannotWrite = 6 ///< a file or standard output could not be written
};

/// Ends a command with a message for the user and an exit code for the shell.
class Failure : public std::runtime_error
{
public:
    Failure(ExitCode code, std::string const& message) : std::runtime_error(message), m_code(code) {}

    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};

} // namespace zviptv::ctl
