// SPDX-License-Identifier: MIT
#pragma once

#include "Loop.h"
#include "Queue.h"

#include <zviptv/client/Client.h>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace zviptv::python {

/// A Television on the thread of the module.
///
/// Functions are for Python's threads. They are called with the GIL, unless they say otherwise.
class Core : public std::enable_shared_from_this<Core>
{
public:
    explicit Core(Television::Options options);
    ~Core();
    Core(Core const&) = delete;
    Core& operator=(Core const&) = delete;

    /// Ends the waits of other threads, waits until these threads have left, and destroys the television.
    /// Further calls do nothing.
    void Close();

    /// Closes all televisions.
    static void CloseAll();

    bool IsAvailable();

    /// Keeps the television alive for a function that runs without the GIL. Construct and destroy it with the
    /// GIL: Close() then returns only when no thread waits for the GIL in this module.
    class Stay
    {
    public:
        /// Raises Failure if the television is closed.
        explicit Stay(Core& core);
        /// Raises nothing. Sets `isStaying` to whether the television is open.
        Stay(Core& core, bool& isStaying);
        ~Stay();
        Stay(Stay const&) = delete;
        Stay& operator=(Stay const&) = delete;

        zviptv::Television& Television() const { return *m_core.m_television; }

    private:
        Core& m_core;
        bool m_isStaying;
    };

    /// Runs `work` on the television's thread. Returns false, and does nothing, if the television is closed.
    bool Post(std::function<void(Television&)> work);

    /// Keeps an object until the television is destroyed.
    void Retain(std::shared_ptr<void> object);

    /// From now on, adds failures that belong to no call to `failures`, as long as the queue exists.
    void AddErrors(std::shared_ptr<Queue<Failure>> const& failures);

    /// Closes `waitable` when the television is closed.
    void CloseWithThis(std::shared_ptr<Waitable> const& waitable);

private:
    bool Enter();

    Loop& m_loop;
    std::unique_ptr<Television> m_television;            ///< created and destroyed by the thread
    std::vector<std::weak_ptr<Queue<Failure>>> m_errors; ///< for the thread

    mutable std::mutex m_mutex;
    std::condition_variable m_left;
    unsigned m_staying = 0;
    bool m_isClosed = false;
    bool m_isDestroyed = false;
    std::vector<std::weak_ptr<Waitable>> m_waitables;
    std::vector<std::shared_ptr<void>> m_retained;
};

} // namespace zviptv::python
