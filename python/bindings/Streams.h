// SPDX-License-Identifier: MIT
#pragma once

#include "Core.h"
#include "Queue.h"

#include <zviptv/client/StateWatcher.h>
#include <zviptv/client/Subscription.h>

#include <pybind11/pybind11.h>

#include <memory>
#include <mutex>
#include <optional>
#include <type_traits>
#include <variant>

namespace zviptv::python {

/// What the television's thread adds for Python: packets, captions, changes or failures.
template <class Item>
struct Feed
{
    /// What Python reads besides the items.
    using Status = std::conditional_t<std::is_same_v<Item, StateEvent>, TelevisionState, PushCounters>;

    explicit Feed(std::size_t limit) : queue(std::make_shared<Queue<Item>>(limit)) {}

    std::shared_ptr<Queue<Item>> queue;
    /// For the television's thread.
    std::variant<std::monostate, Subscription, Listener, StateWatcher> source;

    void SetStatus(Status const& latest)
    {
        std::lock_guard const lock(m_mutex);
        m_status = latest;
    }
    Status GetStatus() const
    {
        std::lock_guard const lock(m_mutex);
        return m_status;
    }

private:
    mutable std::mutex m_mutex;
    Status m_status;
};

/// A feed as Python sees it. Functions are called with the GIL.
template <class Item>
class Stream
{
public:
    Stream(std::shared_ptr<Core> const& core, std::size_t limit);
    ~Stream() { End(); }
    Stream(Stream&& other) noexcept = default;
    Stream(Stream const&) = delete;
    Stream& operator=(Stream const&) = delete;

    /// Subscribes on the television's thread.
    template <class Subscribe>
    void Begin(Subscribe subscribe);

    /// The oldest item; None if there is none.
    pybind11::object Poll();
    /// Waits for an item, `timeout` seconds at most, without the GIL; None waits for ever. Raises
    /// TimeoutError, StopIteration after the end, and what the handler of a signal raises.
    pybind11::object Get(pybind11::object const& timeout);
    int Descriptor() const { return m_feed->queue->Descriptor(); }
    void End();
    /// Makes the watcher of a Stream<StateEvent> ask for the state again.
    void Refresh();
    bool HasEnded() const { return m_feed->queue->IsClosed(); }
    std::uint64_t Dropped() const { return m_feed->queue->Dropped(); }
    typename Feed<Item>::Status Status() const { return m_feed->GetStatus(); }

private:
    std::weak_ptr<Core> m_core;
    std::shared_ptr<Feed<Item>> m_feed; ///< null after a move
    bool m_isEnded = false;
};

/// Adds the streams and the packets to the module.
void BindStreams(pybind11::module_& module, pybind11::class_<Core, std::shared_ptr<Core>>& core);

} // namespace zviptv::python
