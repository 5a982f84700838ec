// SPDX-License-Identifier: MIT
#pragma once

#include "WireMessage.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace zviptv::test {

using MessagePredicate = std::function<bool(WireMessage const&)>;

/// Long enough for a loaded machine under a sanitizer; only a failing test ever waits that long.
constexpr std::chrono::milliseconds patience{20000};

/// The messages received so far, in order. All methods may be called from any thread; predicates
/// run on the calling thread with the log locked, so they must not use the log.
class MessageLog
{
public:
    void Add(WireMessage message);
    void Clear();
    std::size_t Size() const;
    std::vector<WireMessage> All() const;

    /// First message at position `from` or later that satisfies the predicate, waiting for it up to
    /// `timeout`; empty when the time is over.
    std::optional<WireMessage> WaitFor(MessagePredicate const& predicate,
                                       std::chrono::milliseconds timeout = patience,
                                       std::size_t from = 0) const;
    /// True when at least `count` recorded messages satisfy the predicate within `timeout`.
    bool WaitForCount(MessagePredicate const& predicate, std::size_t count,
                      std::chrono::milliseconds timeout = patience) const;
    std::size_t Count(MessagePredicate const& predicate) const;

private:
    /// Calls `visit` for each message from `from` on until it returns true or the time is over;
    /// returns whether it returned true.
    bool Visit(std::function<bool(WireMessage const&)> const& visit, std::chrono::milliseconds timeout,
               std::size_t from) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_added;
    std::vector<WireMessage> m_messages;
    /// The number of calls of Clear(), for threads that wait meanwhile.
    unsigned m_clears = 0;
};

/// Predicates for the usual questions.
MessagePredicate IsCall(std::string member);
MessagePredicate IsSignal(std::string member);

} // namespace zviptv::test
