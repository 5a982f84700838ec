#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace zviptv {

/// The subscribers of one kind of data, in ascending order of their keys.
///
/// Its lock is never held while a callback runs: callbacks may subscribe, unsubscribe and end the
/// subscription's proxy.
template <typename Record>
class Subscribers
{
public:
    using Callback = void (*)(Record&, void*);

    bool Contains(int key) const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_callbacks.count(key) != 0;
    }

    void Add(int key, Callback callback)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_callbacks.emplace(key, callback);
    }

    /// False when there is no such key.
    bool Remove(int key)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_callbacks.erase(key) != 0;
    }

    void Clear()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_callbacks.clear();
    }

    bool IsEmpty() const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_callbacks.empty();
    }

    /// Whether the service was asked to deliver.
    bool IsRequested() const
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        return m_isRequested;
    }

    void SetRequested(bool requested)
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_isRequested = requested;
    }

    /// Hands `record` to every subscriber with a null user-data pointer; `announce` runs before each.
    template <typename Announce>
    void Deliver(Record& record, Announce announce) const
    {
        for (auto next = First(); next; next = After(next->first)) {
            announce();
            next->second(record, nullptr);
        }
    }

private:
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
    bool m_isRequested = false;
};

} // namespace zviptv
