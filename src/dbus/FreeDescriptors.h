// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace zviptv {

/// Descriptors to make a proxy: one for the wake-up of a main context, and one more for another thread.
constexpr int DescriptorsOfAProxy = 2;
/// Descriptors for a first connection: the socket, the wake-ups of the main contexts of GIO's thread, of the
/// process and of the handshake, and some more for other threads.
constexpr int DescriptorsOfAConnection = 8;

/// Whether the given number of descriptors is free; if not, `error` is set. Call it before GLib needs them:
/// GLib ends the process if it gets no descriptor for a wake-up. After the check, another thread can still
/// take them.
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
