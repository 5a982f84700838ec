// SPDX-License-Identifier: MIT
#pragma once

#include <atomic>
#include <utility>

namespace zviptv {

/// A value that a GLib registration owns as its user data.
///
/// GLib's locks order all uses of the value. Tools that check for data races do not see these locks: an
/// atomic counter, which every use changes, orders the uses for them.
template <typename Value>
class UserData
{
public:
    static void* New(Value value) { return new UserData(std::move(value)); }

    /// A copy of the value.
    static Value Get(void* data)
    {
        auto* const self = static_cast<UserData*>(data);
        ++self->m_uses;
        Value value = self->m_value;
        ++self->m_uses;
        return value;
    }

    /// The registration's destroy notify.
    static void Release(void* data)
    {
        auto* const self = static_cast<UserData*>(data);
        ++self->m_uses;
        delete self;
    }

private:
    explicit UserData(Value value) : m_value(std::move(value))
    {
        m_uses = 0; // assigned and not initialized, which would not be atomic
    }

    Value const m_value;
    std::atomic<unsigned> m_uses;
};

} // namespace zviptv
