// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <functional>
#include <thread>

namespace zviptv::python {

/// Whether this process was forked from one that had a television. GLib's threads do not exist in it, so
/// nothing here may be used, locked or destroyed.
bool IsForkedChild();

/// Raises RuntimeError in a forked child.
void CheckNotForked();

/// The thread on which all televisions of the process live. It begins with the first one and ends with the
/// interpreter: GLib works for a while after a connection has been closed, and needs the thread to release
/// what it keeps.
///
/// The thread never runs Python, so it never waits for the GIL. Signals are blocked on it.
class Loop
{
public:
    /// Begins the thread if that is necessary. Raises RuntimeError in a forked child, and after End().
    static Loop& Instance();
    Loop(Loop const&) = delete;
    Loop& operator=(Loop const&) = delete;

    /// Runs `work` on the thread, after all work that was posted before. Any thread.
    void Post(std::function<void()> work);

    /// Runs `work` on the thread, and waits for it. Any other thread, without the GIL.
    void Run(std::function<void()> const& work);

    /// Ends the thread, if there is one. Called with the GIL.
    static void End();

private:
    Loop();

    Owned<GMainContext> m_context{g_main_context_new()};
    bool m_isEnding = false; ///< for the thread
    std::thread m_thread;
};

} // namespace zviptv::python
