// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <initializer_list>
#include <stdexcept>

namespace zviptv {

/// Call it first in a program. If a standard stream is closed, it opens a file at its number that fails like
/// a closed stream. Otherwise a socket or file could get that number, and then the output for the user.
inline void OccupyStandardStreams()
{
    for (int const number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(number, F_GETFD) == -1) {
            // Opens the lowest free number, which is this one, in the mode in which it cannot be used.
            static_cast<void>(open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

/// Call it after writing. @throws std::runtime_error with a line for the user if standard output could not be
/// written completely
inline void RequireOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error("cannot write standard output: check that it is open and not full, and that "
                                 "its reader still runs");
    }
}

} // namespace zviptv
