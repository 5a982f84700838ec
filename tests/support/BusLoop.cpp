// SPDX-License-Identifier: MIT
#include "BusLoop.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <future>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace zviptv::test {

namespace {

ConnectionHandle Open(std::string const& address)
{
    dbus_threads_init_default();
    ErrorHandle error;
    // Not dbus_bus_get_private(): that one reads the address from the environment once per process.
    ConnectionHandle connection(dbus_connection_open_private(address.c_str(), error.Get()));
    if (!connection) {
        throw std::runtime_error("no bus at \"" + address + "\": " + error.Text());
    }
    dbus_connection_set_exit_on_disconnect(connection.get(), FALSE);
    if (dbus_bus_register(connection.get(), error.Get()) == 0) {
        throw std::runtime_error("cannot register at the bus \"" + address + "\": " + error.Text());
    }
    return connection;
}

} // namespace

BusLoop::BusLoop(std::string const& address)
    : m_wakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_connection(Open(address)),
      m_name(dbus_bus_get_unique_name(m_connection.get()))
{
    if (!m_wakeUp) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

BusLoop::~BusLoop()
{
    Stop();
    m_watches.Detach(m_connection.get());
}

void BusLoop::Start(Receiver receiver)
{
    m_receiver = std::move(receiver);
    if (dbus_connection_add_filter(m_connection.get(), Filter, this, nullptr) == 0) {
        throw std::bad_alloc();
    }
    m_watches.Attach(m_connection.get());
    m_thread = std::thread([this] { Loop(); });
}

void BusLoop::Stop()
{
    if (!m_thread.joinable()) {
        return;
    }
    {
        std::lock_guard const lock(m_mutex);
        m_stopping = true;
    }
    Wake();
    m_thread.join();
    m_delayed.clear();
}

void BusLoop::Run(Work const& work)
{
    if (IsLoopThread()) {
        work(m_connection.get());
        return;
    }
    // Shared: the loop is not out of set_value() yet when the future becomes ready.
    auto const finished = std::make_shared<std::promise<void>>();
    auto const done = finished->get_future();
    {
        std::lock_guard const lock(m_mutex);
        if (m_stopping || !m_thread.joinable()) {
            throw std::logic_error("the thread of this connection does not run");
        }
        m_posted.emplace_back([this, &work, finished] {
            work(m_connection.get());
            finished->set_value();
        });
    }
    Wake();
    done.wait();
}

void BusLoop::RunAfter(std::chrono::milliseconds delay, Work work)
{
    m_delayed.push_back(Delayed{Clock::now() + delay, std::move(work)});
}

DBusHandlerResult BusLoop::Filter(DBusConnection*, DBusMessage* message, void* self)
{
    static_cast<BusLoop*>(self)->m_receiver(message);
    return DBUS_HANDLER_RESULT_HANDLED;
}

void BusLoop::Loop()
{
    m_loopThread = std::this_thread::get_id();
    while (RunPosted()) {
        RunDelayed();
        m_watches.HandleTimeouts(Clock::now());
        Poll(Dispatch());
    }
}

bool BusLoop::RunPosted()
{
    std::unique_lock lock(m_mutex);
    while (!m_posted.empty()) {
        auto const task = std::move(m_posted.front());
        m_posted.pop_front();
        lock.unlock();
        task();
        lock.lock();
    }
    return !m_stopping;
}

void BusLoop::RunDelayed()
{
    auto const now = Clock::now();
    auto const firstDue = std::stable_partition(m_delayed.begin(), m_delayed.end(),
                                                [&](Delayed const& delayed) { return delayed.due > now; });
    std::vector<Delayed> due(std::make_move_iterator(firstDue), std::make_move_iterator(m_delayed.end()));
    m_delayed.erase(firstDue, m_delayed.end());
    std::stable_sort(due.begin(), due.end(), [](auto const& a, auto const& b) { return a.due < b.due; });
    for (auto const& delayed : due) {
        delayed.work(m_connection.get());
    }
}

bool BusLoop::Dispatch()
{
    // Not all at once, so that a flood of messages does not keep posted work waiting.
    constexpr int batch = 64;
    for (int i = 0; i < batch; ++i) {
        if (dbus_connection_get_dispatch_status(m_connection.get()) != DBUS_DISPATCH_DATA_REMAINS) {
            return false;
        }
        dbus_connection_dispatch(m_connection.get());
    }
    return true;
}

int BusLoop::PollTimeout() const
{
    auto next = m_watches.NextDeadline();
    for (auto const& delayed : m_delayed) {
        next = std::min(next, delayed.due);
    }
    if (next == Clock::time_point::max()) {
        return -1;
    }
    // Rounded up: waking too early would spin through the last millisecond.
    auto const left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
    return static_cast<int>(std::clamp<long long>(left, 0, std::numeric_limits<int>::max()));
}

void BusLoop::Poll(bool moreToDispatch)
{
    std::vector<pollfd> polled{pollfd{m_wakeUp.Get(), POLLIN, 0}};
    m_watches.AddTo(polled);
    if (poll(polled.data(), polled.size(), moreToDispatch ? 0 : PollTimeout()) <= 0) {
        return;
    }
    if (polled.front().revents != 0) {
        eventfd_t count = 0;
        eventfd_read(m_wakeUp.Get(), &count);
    }
    m_watches.HandleEvents(polled);
}

void BusLoop::Wake() const
{
    eventfd_write(m_wakeUp.Get(), 1);
}

} // namespace zviptv::test
