// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <memory>

namespace zviptv::ctl {

/// A timer or a signal handler, which ends with this object.
class EventSource
{
public:
    using Work = std::function<void()>;

    EventSource() = default;
    EventSource(unsigned id, std::unique_ptr<Work> work);
    ~EventSource();
    EventSource(EventSource&& other) noexcept;
    EventSource& operator=(EventSource&& other) noexcept;

private:
    unsigned m_id = 0;
    std::unique_ptr<Work> m_work;
};

/// The main loop: iterates the process's default main context on the main thread.
class Loop
{
public:
    using ErrorHandler = std::function<void(std::exception const& error)>;
    using Hook = std::function<void()>;

    /// Runs at fixed times: a late event does not delay the following ones. Missed events are left out.
    static EventSource Every(std::chrono::milliseconds interval, EventSource::Work work);
    static EventSource OnSignal(int number, EventSource::Work work);

    /// Handles the pending events without waiting.
    static void RunPending();

    /// Handles events until Quit(), and runs `afterEvents` after each batch. Exceptions of a handler are
    /// passed to `onError`, and the loop continues: the library reports notifications that it cannot read in
    /// this way.
    void Run(
        ErrorHandler const& onError, Hook const& afterEvents = [] {});

    /// Run() returns after the present event.
    void Quit() { m_quitting = true; }

private:
    bool m_quitting = false;
};

} // namespace zviptv::ctl
