// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <initializer_list>
#include <stdexcept>

namespace zviptv {

/// To be called first of all by a program: a standard stream that is closed gets its number taken by
/// something that fails as a closed one does, so that no socket or file is given that number and then gets
/// what was meant for the user.
inline void OccupyStandardStreams()
{
    for (int const number : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(number, F_GETFD) == -1) {
            // The lowest free number, which is this one. To be read is what cannot be read, and so on.
            static_cast<void>(open("/dev/null", number == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

/// To be called after writing. @throws std::runtime_error with a line for the user when standard output has
/// not taken everything so far
inline void RequireOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        throw std::runtime_error(
            "cannot write standard output: see whether it is closed or full, or its reader has gone");
    }
}

} // namespace zviptv
