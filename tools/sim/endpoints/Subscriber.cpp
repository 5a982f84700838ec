// SPDX-License-Identifier: MIT
#include "Subscriber.h"

#include <zviptv/CommonNative.h>
#include <zviptv/Protocol.h>
#include <zviptv/ProxyDBusHelper.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zviptv::sim {

namespace {

constexpr std::chrono::seconds AskAgain{1};

} // namespace

/// The endpoint that answers calls exports the path; this channel only sends.
class Subscriber::Channel final : public CCommonNative
{
public:
    Channel() : CCommonNative(protocol::type::DataSubscriber) {}

    bool IsConnected() { return m_pDBusHelper->IsConnectionReady(); }
};

Subscriber::Subscriber(std::string const& busName, std::function<void()> onGone,
                       std::function<void()> onStopped)
    : m_onGone(std::move(onGone)), m_onStopped(std::move(onStopped)), m_channel(std::make_unique<Channel>()),
      m_question(busName)
{
    m_channel->SetDisconnectNotiCB(Gone, this);
    m_channel->Connect(busName);
    m_thread = std::thread([this] { Run(); });
}

Subscriber::~Subscriber()
{
    Stop();
    m_thread.join();
}

void Subscriber::Gone(std::string /*partner*/, std::string /*own*/, void* self)
{
    static_cast<Subscriber*>(self)->m_onGone();
}

void Subscriber::Offer(Notification const& notification, std::size_t size, Clock::time_point due)
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    if (m_queue.size() >= MaxQueued || m_queuedBytes + size > MaxQueuedBytes) {
        ++m_counts.dropped;
        return;
    }
    auto const later =
        std::upper_bound(m_queue.begin(), m_queue.end(), due,
                         [](Clock::time_point time, Item const& queued) { return time < queued.due; });
    m_queue.insert(later, {notification, size, due});
    m_queuedBytes += size;
    m_changed.notify_all();
}

void Subscriber::Discard()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_queue.clear();
    m_queuedBytes = 0;
}

void Subscriber::Restart()
{
    Discard();
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_counts = Counts();
}

void Subscriber::Stop()
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    m_stopping = true;
    m_question.Cancel();
    m_changed.notify_all();
}

bool Subscriber::HasStopped() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    return m_stopped;
}

Subscriber::Counts Subscriber::Count() const
{
    std::lock_guard<std::mutex> const lock(m_mutex);
    Counts counts = m_counts;
    counts.queued = m_queue.size();
    return counts;
}

void Subscriber::Run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (WaitForWork(lock)) {
        SendWindow(lock);
        AwaitConsumer(lock);
    }
    m_stopped = true;
    lock.unlock();
    m_onStopped();
}

bool Subscriber::WaitForWork(std::unique_lock<std::mutex>& lock)
{
    while (!m_stopping && (m_queue.empty() || m_queue.front().due > Clock::now())) {
        if (m_queue.empty()) {
            m_changed.wait(lock);
        } else {
            Clock::time_point const due = m_queue.front().due; // which may be another one after the wait
            m_changed.wait_until(lock, due);
        }
    }
    return !m_stopping;
}

void Subscriber::SendWindow(std::unique_lock<std::mutex>& lock)
{
    std::size_t count = 0;
    for (std::size_t bytes = 0; count < Window && bytes < WindowBytes && WaitForWork(lock); ++count) {
        Item const item = std::move(m_queue.front());
        m_queue.pop_front();
        m_queuedBytes -= item.size;
        bytes += item.size;
        lock.unlock();
        bool const sent = m_channel->t_SendNotication(*item.notification);
        lock.lock();
        ++(sent ? m_counts.sent : m_counts.dropped);
    }
}

/// Calls until the application answers. If the bus refuses the call because too many calls are unanswered,
/// tries again after a pause.
void Subscriber::AwaitConsumer(std::unique_lock<std::mutex>& lock)
{
    while (!m_stopping) {
        lock.unlock();
        bool const goOn = m_question.Ask() || !m_channel->IsConnected();
        lock.lock();
        if (goOn) {
            return;
        }
        m_changed.wait_for(lock, AskAgain, [this] { return m_stopping; });
    }
}

} // namespace zviptv::sim
