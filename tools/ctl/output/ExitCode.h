#pragma once

namespace zviptv::ctl {

/// What zviptvctl tells the shell.
enum class ExitCode
{
    Accepted = 0,   ///< the service accepted, or the command ran to its end
    Refused = 1,    ///< the service answered with the result "false"
    Usage = 2,      ///< the command line makes no sense
    NoService = 3,  ///< the bus or the service is not there, or it went away
    NoAnswer = 4,   ///< time-out, or the bus reported an error
    Malformed = 5,  ///< the service answered with something that cannot be read
    CannotWrite = 6 ///< a file, or standard output, does not take the data
};

} // namespace zviptv::ctl
