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

/// Delivery of notifications to one application, at the application's pace.
///
/// A queue and a thread per application: the thread sends a window of notifications and then makes a call,
/// which the application answers when it has worked them off. So neither the bus nor this process piles up
/// data for an application that does not run; what the queue cannot hold is dropped and counted. Once the
/// application goes on, it answers, and gets what waits in the queue.
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
    /// bus; it must not destroy the subscriber. `onStopped` is called, on the subscriber's own thread, as the
    /// last that happens there.
    Subscriber(std::string const& busName, std::function<void()> onGone, std::function<void()> onStopped);
    ~Subscriber();
    Subscriber(Subscriber const&) = delete;
    Subscriber& operator=(Subscriber const&) = delete;

    /// Queues a notification of `size` bytes that is sent when it is `due`, or drops it when the queue is
    /// full. Of those that are due at the same time, the one that was queued first is sent first.
    void Offer(Notification const& notification, std::size_t size, Clock::time_point due);

    /// Drops what waits in the queue, uncounted.
    void Discard();

    /// The same, and counts from zero again.
    void Restart();

    /// Tells the thread to end, without waiting for it.
    void Stop();

    /// The thread has ended, so that the destructor waits for nothing.
    bool HasStopped() const;

    struct Counts
    {
        std::uint64_t sent = 0;
        std::uint64_t dropped = 0; ///< found the queue full, or could not be sent
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
    std::deque<Item> m_queue; ///< by the times when they are due
    std::size_t m_queuedBytes = 0;
    Counts m_counts;
    bool m_stopping = false;
    bool m_stopped = false;
    std::unique_ptr<Channel> m_channel;
    Question m_question;
    std::thread m_thread;
};

} // namespace zviptv::sim
