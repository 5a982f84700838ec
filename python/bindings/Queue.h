// SPDX-License-Identifier: MIT
#pragma once

#include <cerrno>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace zviptv::python {

/// Something that a thread may wait for. Closing it ends the wait.
class Waitable
{
public:
    Waitable(Waitable const&) = delete;
    Waitable& operator=(Waitable const&) = delete;
    virtual ~Waitable() = default;

    virtual void Close() = 0;

protected:
    Waitable() = default;
};

/// Items on their way from the television's thread to Python. A file descriptor is readable while there are
/// items, and after Close(). Functions can be called on any thread, with or without the GIL.
template <class Item>
class Queue : public Waitable
{
public:
    /// Keeps the latest `limit` items; 0 for all.
    explicit Queue(std::size_t limit) : m_limit(limit), m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    {
        if (m_descriptor < 0) {
            throw std::system_error(errno, std::generic_category(), "cannot create an event descriptor");
        }
    }
    ~Queue() override { close(m_descriptor); }

    int Descriptor() const { return m_descriptor; }

    /// Adds an item. Drops the oldest one if there are too many.
    void Push(Item item)
    {
        std::optional<Item> dropped; // destroyed without the lock
        std::lock_guard const lock(m_mutex);
        if (m_limit != 0 && m_items.size() == m_limit) {
            dropped = std::move(m_items.front());
            m_items.pop_front();
            ++m_dropped;
        }
        m_items.push_back(std::move(item));
        if (m_items.size() == 1) {
            Signal();
        }
    }

    /// The oldest item; nothing if there is none.
    std::optional<Item> Pop()
    {
        std::lock_guard const lock(m_mutex);
        if (m_items.empty()) {
            return std::nullopt;
        }
        std::optional<Item> item = std::move(m_items.front());
        m_items.pop_front();
        if (m_items.empty() && !m_isClosed) {
            eventfd_t count = 0;
            eventfd_read(m_descriptor, &count);
        }
        return item;
    }

    /// Ends every wait, also later ones.
    void Close() override
    {
        std::lock_guard const lock(m_mutex);
        m_isClosed = true;
        Signal();
    }

    bool IsClosed() const
    {
        std::lock_guard const lock(m_mutex);
        return m_isClosed;
    }

    std::uint64_t Dropped() const
    {
        std::lock_guard const lock(m_mutex);
        return m_dropped;
    }

private:
    void Signal() { eventfd_write(m_descriptor, 1); }

    std::size_t const m_limit;
    int const m_descriptor;
    mutable std::mutex m_mutex;
    std::deque<Item> m_items;
    std::uint64_t m_dropped = 0;
    bool m_isClosed = false;
};

} // namespace zviptv::python
