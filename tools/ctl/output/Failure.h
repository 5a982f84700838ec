#pragma once

#include "ExitCode.h"

#include <stdexcept>
#include <string>

namespace zviptv::ctl {

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
