// SPDX-License-Identifier: MIT
/// @file
/// A value, or the reason why there is none.

#pragma once

#include <zviptv/client/Failure.h>

#include <functional>
#include <optional>
#include <utility>
#include <variant>

namespace zviptv {

/// Ends the process with a message on standard error because the program has read the wrong part of a Result.
/// `failure` is the failure of the call whose value was read. It is null if the failure of a successful call
/// was read.
[[noreturn]] ZVIPTV_API void EndWrongRead(Failure const* failure);

/// The outcome of a call: a value of type T, or a Failure.
///
/// Test it before you read it: `if (auto clock = player.GetSTCCount()) { Show(*clock); }`. Reading the value
/// of a failed call, or the failure of a successful one, is an error of the program and ends the process with
/// a message. A Result belongs to one thread at a time.
template <class T>
class [[nodiscard]] Result
{
public:
    using Value = T; ///< what a call returns

    /// Success with a value.
    Result(T value) : m_content(std::in_place_index<0>, std::move(value)) {}
    /// A failed call.
    Result(Failure failure) : m_content(std::in_place_index<1>, std::move(failure)) {}

    /// Whether there is a value.
    explicit operator bool() const noexcept { return m_content.index() == 0; }

    /// The value.
    T& operator*() & { return Read(*this); }
    /// The value.
    T const& operator*() const& { return Read(*this); }
    /// The value, to be moved from.
    T&& operator*() && { return std::move(Read(*this)); }
    /// Access to a member of the value.
    T* operator->() { return &Read(*this); }
    /// Access to a member of the value.
    T const* operator->() const { return &Read(*this); }

    /// The value, or `other` if the call failed.
    T ValueOr(T other) const { return *this ? Read(*this) : std::move(other); }

    /// Why the call failed.
    Failure const& GetFailure() const
    {
        Failure const* const failure = std::get_if<1>(&m_content);
        if (failure == nullptr) {
            EndWrongRead(nullptr);
        }
        return *failure;
    }

private:
    template <class Self>
    static auto& Read(Self& self)
    {
        if (self.m_content.index() != 0) {
            EndWrongRead(std::get_if<1>(&self.m_content));
        }
        return *std::get_if<0>(&self.m_content);
    }

    std::variant<T, Failure> m_content;
};

/// The outcome of a call that returns no value: success, or a Failure.
template <>
class [[nodiscard]] Result<void>
{
public:
    using Value = void; ///< as in the other results

    Result() = default;
    /// A failed call.
    Result(Failure failure) : m_failure(std::move(failure)) {}

    /// Whether the call succeeded.
    explicit operator bool() const noexcept { return !m_failure.has_value(); }

    /// Why the call failed.
    Failure const& GetFailure() const
    {
        if (!m_failure) {
            EndWrongRead(nullptr);
        }
        return *m_failure;
    }

private:
    std::optional<Failure> m_failure;
};

/// What an asynchronous call runs when it is done: once, on the thread that iterates the Television's
/// context, never inside the call itself. An exception that it throws is caught and reported to
/// Television::OnError.
template <class T>
using Completion = std::function<void(Result<T>)>;

} // namespace zviptv
