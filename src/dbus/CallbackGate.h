// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/UserData.h"

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace zviptv {

/// The user data of GLib's callbacks, in place of a raw object pointer.
///
/// GLib calls back on the thread that iterates a context, with the user data it was given, even while another
/// thread is unregistering. The gate gives such a callback the object while the object exists, and null
/// afterwards: the registration owns one reference (Token), and the object closes the gate before it is
/// destroyed.
class CallbackGate
{
public:
    using Pointer = std::shared_ptr<CallbackGate>;

    explicit CallbackGate(void* owner) : m_owner(owner) {}

    /// User data for a GLib registration; released with ReleaseToken.
    static void* NewToken(Pointer const& gate) { return UserData<Pointer>::New(gate); }
    static Pointer FromToken(void* data) { return UserData<Pointer>::Get(data); }
    static void ReleaseToken(void* data) { UserData<Pointer>::Release(data); }

    /// Closes the gate: no further visit begins.
    void Refuse()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_owner = nullptr;
    }

    /// Returns when no other thread is in a visit.
    void WaitForOthers()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_left.wait(lock, [this] { return !HasOtherVisitors(); });
    }

    /// The access of a callback to the owner. The owner waits for the end of the visit before it is
    /// destroyed, unless it is destroyed on the visit's thread.
    template <typename Owner>
    class Visit
    {
    public:
        explicit Visit(Pointer gate) : m_gate(std::move(gate)), m_owner(static_cast<Owner*>(m_gate->Enter()))
        {
        }
        ~Visit() { Leave(); }
        Visit(Visit const&) = delete;
        Visit& operator=(Visit const&) = delete;

        void Leave()
        {
            if (m_owner != nullptr) {
                m_owner = nullptr;
                m_gate->Exit();
            }
        }

        explicit operator bool() const { return m_owner != nullptr; }
        Owner* operator->() const { return m_owner; }

    private:
        Pointer m_gate;
        Owner* m_owner;
    };

private:
    void* Enter()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        if (m_owner != nullptr) {
            m_inside.push_back(std::this_thread::get_id());
        }
        return m_owner;
    }

    void Exit()
    {
        std::lock_guard<std::mutex> const lock(m_mutex);
        m_inside.erase(std::find(m_inside.begin(), m_inside.end(), std::this_thread::get_id()));
        m_left.notify_all();
    }

    bool HasOtherVisitors() const
    {
        return std::any_of(m_inside.begin(), m_inside.end(),
                           [](std::thread::id id) { return id != std::this_thread::get_id(); });
    }

    std::mutex m_mutex;
    std::condition_variable m_left;
    std::vector<std::thread::id> m_inside;
    void* m_owner;
};

} // namespace zviptv
