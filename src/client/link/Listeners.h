// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Pending.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace zviptv::client {

/// Registered callbacks, which run in the order of their registration. A callback may add and withdraw
/// callbacks.
template <class... Arguments>
class Listeners
{
public:
    using Callback = std::function<void(Arguments...)>;

    Listener Add(Callback callback)
    {
        unsigned long long const key = ++m_lastKey;
        (*m_callbacks)[key] = std::make_shared<Callback const>(std::move(callback));
        return Listener([weak = std::weak_ptr<Table>(m_callbacks), key] {
            if (auto const table = weak.lock()) {
                table->erase(key);
            }
        });
    }

    /// Calls `run` with each callback that is registered now and has not been withdrawn meanwhile. The
    /// listeners may end meanwhile.
    void ForEach(std::function<void(Callback const&)> const& run) const
    {
        auto const table = m_callbacks;
        std::vector<unsigned long long> keys;
        for (auto const& entry : *table) {
            keys.push_back(entry.first);
        }
        for (unsigned long long const key : keys) {
            auto const found = table->find(key);
            if (found != table->end()) {
                std::shared_ptr<Callback const> const callback = found->second;
                run(*callback);
            }
        }
    }

    void Clear() { m_callbacks->clear(); }

private:
    using Table = std::map<unsigned long long, std::shared_ptr<Callback const>>;

    std::shared_ptr<Table> m_callbacks = std::make_shared<Table>();
    unsigned long long m_lastKey = 0;
};

} // namespace zviptv::client
