// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <exception>
#include <functional>
#include <memory>

namespace zviptv::ctl {

/// A timer or a signal handler: alive as long as this.
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

    /// Keeps to its times: one event that comes late does not delay those that follow. What was missed is
    /// left out.
    static EventSource Every(std::chrono::milliseconds interval, EventSource::Work work);
    static EventSource OnSignal(int number, EventSource::Work work);

    /// Handles the events that are there, without waiting for any.
    static void RunPending();

    /// Handles events until Quit(), and runs `afterEvents` whenever some were handled. What leaves an event's
    /// handler as an exception is given to `onError` and the loop goes on: so the library tells of
    /// notifications that it cannot read.
    void Run(
        ErrorHandler const& onError, Hook const& afterEvents = [] {});

    /// Run() returns after the present event.
    void Quit() { m_quitting = true; }

private:
    bool m_quitting = false;
};

} // namespace zviptv::ctl
