// SPDX-License-Identifier: MIT
#pragma once

#include "failure/LastFailure.h"

#include <cstddef>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace zviptv {

/// The subscribers of one kind of data, in ascending order of their keys.
/// No lock is held while a callback runs: callbacks may subscribe, unsubscribe and end the subscription's
/// proxy.
template <typename Record>
class Subscribers
{
public:
    using Callback = void (*)(Record&, void*);
    using Bytes = decltype(Record::data);

    bool Contains(int key) const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_callbacks.count(key) != 0;
    }

    /// Does nothing after Close().
    void Add(int key, Callback callback)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        if (!m_isClosed) {
            m_callbacks.emplace(key, callback);
        }
    }

    /// Returns false if there is no such key.
    bool Remove(int key)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_callbacks.erase(key) != 0;
    }

    /// Ends all subscriptions permanently: a running dispatch finds no further subscriber.
    void Close()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_isClosed = true;
        m_callbacks.clear();
    }

    bool IsEmpty() const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_callbacks.empty();
    }

    /// Whether the service was asked to send.
    bool IsRequested() const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_isRequested;
    }

    void SetRequested(bool requested)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_isRequested = requested;
        Bytes().swap(m_spare);
    }

    /// Memory for the next record's bytes: that of the last record, if it was kept and is not in use.
    Bytes TakeSpare()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return std::exchange(m_spare, Bytes());
    }

    /// Keeps a record's memory for the next one. malloc would return it to the system and get it again page
    /// by page, which costs more than the record. Unusually large memory is not kept, nor is any if there are
    /// no subscribers.
    void KeepSpare(Bytes&& bytes)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        if (m_isRequested && bytes.capacity() <= LargestSpare) {
            m_spare = std::move(bytes);
        }
    }

    /// Passes `record` to every subscriber with a null user-data pointer; `announce` runs before each.
    template <typename Announce>
    void Deliver(Record& record, Announce announce) const
    {
        for (auto next = First(); next; next = After(next->first)) {
            announce();
            next->second(record, nullptr);
        }
    }

    /// Why the service was not asked to send, or refused to.
    KeptFailure requestFailure;

private:
    static constexpr std::size_t LargestSpare = 2 * 1024 * 1024;

    using Subscription = std::pair<int, Callback>;

    std::optional<Subscription> First() const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_callbacks.empty() ? std::nullopt : std::optional<Subscription>(*m_callbacks.begin());
    }

    std::optional<Subscription> After(int key) const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        auto const next = m_callbacks.upper_bound(key);
        return next == m_callbacks.end() ? std::nullopt : std::optional<Subscription>(*next);
    }

    mutable std::mutex m_mutex;
    std::map<int, Callback> m_callbacks;
    Bytes m_spare;
    bool m_isRequested = false;
    bool m_isClosed = false;
};

} // namespace zviptv
