// SPDX-License-Identifier: MIT
#pragma once

#include "Question.h"

#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace zviptv::sim {

/// Delivers notifications to one application, at the application's pace.
/// There is a queue and a thread per application. The thread sends a window of notifications and then makes a
/// call, which the application answers after it has handled them. Therefore neither the bus nor this process
/// piles up data for a stopped application; notifications that do not fit into the queue are dropped and
/// counted. When the application continues, it answers, and gets the notifications in the queue.
class Subscriber
{
public:
    using Notification = std::shared_ptr<CMessageBuffer>;
    using Clock = std::chrono::steady_clock;

    static constexpr std::size_t MaxQueued = 1024;
    static constexpr std::size_t MaxQueuedBytes = 4 * 1024 * 1024;
    static constexpr std::size_t Window = 64;
    static constexpr std::size_t WindowBytes = 512 * 1024;

    /// Connects to the application's channel. `onGone` is called, in the main context, when it leaves the
    /// bus; it must not destroy the subscriber. `onStopped` is called on the subscriber's thread, at its very
    /// end.
    Subscriber(std::string const& busName, std::function<void()> onGone, std::function<void()> onStopped);
    ~Subscriber();
    Subscriber(Subscriber const&) = delete;
    Subscriber& operator=(Subscriber const&) = delete;

    /// Queues a notification of `size` bytes that is sent when it is `due`, or drops it when the queue is
    /// full. Notifications that are due at the same time are sent in the order of queuing.
    void Offer(Notification const& notification, std::size_t size, Clock::time_point due);

    /// Drops the notifications in the queue without counting them.
    void Discard();

    /// The same, and resets the counters to zero.
    void Restart();

    /// Requests the end of the thread without waiting for it.
    void Stop();

    /// Whether the thread has ended, so that the destructor does not wait.
    bool HasStopped() const;

    struct Counts
    {
        std::uint64_t sent = 0;
        std::uint64_t dropped = 0; ///< the queue was full, or they could not be sent
        std::size_t queued = 0;
    };
    Counts Count() const;

private:
    class Channel;
    struct Item
    {
        Notification notification;
        std::size_t size;
        Clock::time_point due;
    };

    void Run();
    bool WaitForWork(std::unique_lock<std::mutex>& lock);
    void SendWindow(std::unique_lock<std::mutex>& lock);
    void AwaitConsumer(std::unique_lock<std::mutex>& lock);
    static void Gone(std::string partner, std::string own, void* self);

    std::function<void()> m_onGone;
    std::function<void()> m_onStopped;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Item> m_queue; ///< ordered by the times when they are due
    std::size_t m_queuedBytes = 0;
    Counts m_counts;
    bool m_stopping = false;
    bool m_stopped = false;
    std::unique_ptr<Channel> m_channel;
    Question m_question;
    std::thread m_thread;
};

} // namespace zviptv::sim
