// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <functional>
#include <thread>

namespace zviptv::python {

/// Whether this process was forked from one that had a television. GLib's threads do not exist in it, so
/// nothing here may be used, locked or destroyed.
bool IsForkedChild();

/// Whether the calling thread runs another interpreter than the main one, which has all televisions.
bool IsSubinterpreter();

/// Raises RuntimeError in a forked child.
void CheckNotForked();

/// The thread of all televisions of the process. It starts with the first television, and ends with the
/// interpreter and not with the last television: after a connection is closed, GLib still needs the thread to
/// release resources.
///
/// The thread never runs Python, so it never waits for the GIL. Signals are blocked on it.
class Loop
{
public:
    /// Starts the thread if it does not run. Raises RuntimeError in a forked child, in a subinterpreter,
    /// and after End().
    static Loop& Instance();
    Loop(Loop const&) = delete;
    Loop& operator=(Loop const&) = delete;

    /// Runs `work` on the thread, after all work that was posted before. Can be called on any thread.
    void Post(std::function<void()> work);

    /// Runs `work` on the thread, and waits for it. Called on another thread, without the GIL.
    void Run(std::function<void()> const& work);

    /// Marks a function that waits for the thread without the GIL. Construct and destroy it with the GIL:
    /// Python must not end while a thread waits for the GIL in this module.
    class Use
    {
    public:
        Use();
        ~Use();
        Use(Use const&) = delete;
        Use& operator=(Use const&) = delete;
    };

    /// Refuses new televisions, waits for the functions that use the thread, runs `closeAll`, and ends the
    /// thread, if there is one. Does nothing in a subinterpreter. Called with the GIL.
    static void End(std::function<void()> const& closeAll);

private:
    Loop();

    Owned<GMainContext> m_context{g_main_context_new()};
    bool m_isEnding = false; ///< for the thread
    std::thread m_thread;
};

} // namespace zviptv::python
