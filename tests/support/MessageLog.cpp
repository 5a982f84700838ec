// SPDX-License-Identifier: MIT
#include "MessageLog.h"

#include <algorithm>
#include <utility>

namespace zviptv::test {

void MessageLog::Add(WireMessage message)
{
    std::lock_guard const lock(m_mutex);
    m_messages.push_back(std::move(message));
    m_added.notify_all();
}

void MessageLog::Clear()
{
    std::lock_guard const lock(m_mutex);
    m_messages.clear();
    ++m_clears;
}

std::size_t MessageLog::Size() const
{
    std::lock_guard const lock(m_mutex);
    return m_messages.size();
}

std::vector<WireMessage> MessageLog::All() const
{
    std::lock_guard const lock(m_mutex);
    return m_messages;
}

bool MessageLog::Visit(std::function<bool(WireMessage const&)> const& visit,
                       std::chrono::milliseconds timeout, std::size_t from) const
{
    std::unique_lock lock(m_mutex);
    std::size_t next = from;
    unsigned clears = m_clears;
    return m_added.wait_for(lock, timeout, [&] {
        if (std::exchange(clears, m_clears) != m_clears) {
            next = 0;
        }
        while (next < m_messages.size()) {
            if (visit(m_messages[next++])) {
                return true;
            }
        }
        return false;
    });
}

std::optional<WireMessage> MessageLog::WaitFor(MessagePredicate const& predicate,
                                               std::chrono::milliseconds timeout, std::size_t from) const
{
    std::optional<WireMessage> found;
    auto const take = [&](WireMessage const& message) {
        if (predicate(message)) {
            found = message;
        }
        return found.has_value();
    };
    Visit(take, timeout, from);
    return found;
}

bool MessageLog::WaitForCount(MessagePredicate const& predicate, std::size_t count,
                              std::chrono::milliseconds timeout) const
{
    std::size_t found = 0;
    auto const enough = [&](WireMessage const& message) {
        found += predicate(message) ? 1U : 0U;
        return found >= count;
    };
    return count == 0 || Visit(enough, timeout, 0);
}

std::size_t MessageLog::Count(MessagePredicate const& predicate) const
{
    std::lock_guard const lock(m_mutex);
    return static_cast<std::size_t>(std::count_if(m_messages.begin(), m_messages.end(), predicate));
}

MessagePredicate IsCall(std::string member)
{
    return [member = std::move(member)](WireMessage const& message) {
        return message.kind == WireKind::Call && message.member == member;
    };
}

MessagePredicate IsSignal(std::string member)
{
    return [member = std::move(member)](WireMessage const& message) {
        return message.kind == WireKind::Signal && message.member == member;
    };
}

} // namespace zviptv::test
