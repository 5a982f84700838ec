// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace zviptv {

/// What GLib opens to make a proxy: the wake-up of a main context; one more for another thread.
constexpr int DescriptorsOfAProxy = 2;
/// For a first connection: the socket, and the wake-ups of the main contexts of GIO's thread, the process and
/// the greeting; some more for other threads.
constexpr int DescriptorsOfAConnection = 8;

/// Whether that many descriptors are free; `error` says when they are not. Asked before GLib needs them: it
/// ends the process when it gets none for a wake-up. Between the question and the use another thread can take
/// them.
inline bool HaveFreeDescriptors(int count, Error& error)
{
    int const descriptor = eventfd(0, EFD_CLOEXEC);
    bool const areFree = descriptor >= 0 && (count <= 1 || HaveFreeDescriptors(count - 1, error));
    if (descriptor >= 0) {
        close(descriptor);
    }
    if (!areFree) {
        error.Set(G_IO_ERROR_TOO_MANY_OPEN_FILES, "Too many open files");
    }
    return areFree;
}

} // namespace zviptv
