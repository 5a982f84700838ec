// SPDX-License-Identifier: MIT
/// @file
/// Handles of asynchronous calls.

#pragma once

#include <zviptv/Export.h>

#include <chrono>
#include <functional>
#include <utility>

namespace zviptv {

/// How an asynchronous call is made.
struct CallOptions
{
    /// The longest time from the call to its completion, including the time to connect. With zero or less,
    /// the call times out at once.
    std::chrono::milliseconds timeout{2000};
};

/// The handle of an asynchronous call. Dropping it does not cancel the call; copies stand for the same call.
///
/// Threads: use it on the thread that iterates the Television's context. It may outlive the Television.
class Pending
{
public:
    /// Stands for no call.
    Pending() = default;
    /// Used by the client layer only.
    explicit Pending(std::function<void()> cancel) : m_cancel(std::move(cancel)) {}

    /// Ends the call: its completion runs with FailureKind::Cancelled, later and not inside Cancel(). The
    /// service may have carried the request out. Does nothing if the call is done, or was cancelled before.
    void Cancel() const
    {
        if (m_cancel) {
            m_cancel();
        }
    }

private:
    std::function<void()> m_cancel;
};

/// A registered callback. The destructor withdraws it: the callback does not run any more.
///
/// Threads: use it on the thread that iterates the Television's context, also inside callbacks. It may
/// outlive the Television.
class [[nodiscard]] Listener
{
public:
    /// Stands for no callback.
    Listener() = default;
    /// Used by the client layer only.
    explicit Listener(std::function<void()> withdraw) : m_withdraw(std::move(withdraw)) {}
    ~Listener() { Withdraw(); }
    /// Takes over the callback of `other`, which then stands for none.
    Listener(Listener&& other) noexcept : m_withdraw(std::exchange(other.m_withdraw, nullptr)) {}
    /// Withdraws the callback of this object, and takes over that of `other`.
    Listener& operator=(Listener&& other) noexcept
    {
        if (this != &other) {
            Withdraw();
            m_withdraw = std::exchange(other.m_withdraw, nullptr);
        }
        return *this;
    }

    /// Withdraws the callback, as the destructor does. Further calls do nothing.
    void Withdraw()
    {
        if (auto const withdraw = std::exchange(m_withdraw, nullptr)) {
            withdraw();
        }
    }

private:
    std::function<void()> m_withdraw;
};

} // namespace zviptv
