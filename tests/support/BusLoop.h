// SPDX-License-Identifier: MIT
#pragma once

#include "Handles.h"
#include "WatchSet.h"
#include "process/FileHandle.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zviptv::test {

/// A private connection to a bus and the one thread that uses it. Everybody else hands work to that
/// thread, so the connection is never used by two threads and no lock is held in libdbus for long.
class BusLoop
{
public:
    using Clock = WatchSet::Clock;
    using Work = std::function<void(DBusConnection*)>;
    /// Gets every incoming message that is not the reply to a call of this connection, on the loop's
    /// thread. libdbus itself answers none of them.
    using Receiver = std::function<void(DBusMessage*)>;

    /// Connects and registers; Start() begins to deliver. Throws std::runtime_error without a bus.
    explicit BusLoop(std::string const& address);
    /// Ends the thread, then closes the connection.
    ~BusLoop();
    BusLoop(BusLoop const&) = delete;
    BusLoop& operator=(BusLoop const&) = delete;

    /// For blocking calls before Start(), on the constructing thread.
    DBusConnection* Connection() { return m_connection.get(); }
    void Start(Receiver receiver);
    /// Ends the thread; nothing is delivered afterwards. Called by the destructor.
    void Stop();

    std::string const& Name() const { return m_name; }
    bool IsLoopThread() const { return std::this_thread::get_id() == m_loopThread; }

    /// Runs the work on the loop's thread and waits for it; at once if this is the loop's thread.
    /// The work must not throw. Throws std::logic_error if the thread does not run.
    void Run(Work const& work);
    /// Runs the work that much later, if the loop still runs. On the loop's thread only.
    void RunAfter(std::chrono::milliseconds delay, Work work);

private:
    struct Delayed
    {
        Clock::time_point due;
        Work work;
    };

    static DBusHandlerResult Filter(DBusConnection* connection, DBusMessage* message, void* self);

    void Loop();
    bool RunPosted();
    void RunDelayed();
    /// True if there is more to dispatch.
    bool Dispatch();
    void Poll(bool moreToDispatch);
    int PollTimeout() const;
    void Wake() const;

    FileHandle m_wakeUp;
    ConnectionHandle m_connection;
    std::string m_name;
    WatchSet m_watches;
    Receiver m_receiver;
    std::vector<Delayed> m_delayed;

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_posted;
    bool m_stopping = false;

    /// Set by the thread itself, which may be asked for it before m_thread is assigned.
    std::atomic<std::thread::id> m_loopThread{};
    std::thread m_thread;
};

} // namespace zviptv::test
