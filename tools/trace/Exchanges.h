// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zviptv::trace {

/// A call whose reply is awaited.
struct Exchange
{
    enum class Kind
    {
        Request,
        Announcement,
        ProcessQuestion ///< to the bus: which process owns a name?
    };

    Kind kind = Kind::Request;
    std::uint64_t number = 0;
    std::int64_t time = 0;
    std::string callee; ///< bus name that was called
    std::string endpoint;
    std::string function;
    std::string subject; ///< of a ProcessQuestion
    bool isFromService = false;
};

/// The calls whose replies are awaited: the latest ones, a bounded number.
class Exchanges
{
public:
    void Add(std::string_view caller, std::uint32_t serial, Exchange exchange);

    /// Takes the call out that a reply to `caller` answers; empty if it is not known.
    std::optional<Exchange> Take(std::string_view caller, std::uint32_t replySerial);

    /// Calls that were given up because too many others came after them.
    std::uint64_t Forgotten() const { return m_forgotten; }

private:
    std::unordered_map<std::string, Exchange> m_open;
    std::deque<std::string> m_order; ///< keys, oldest first; also of calls that were answered
    std::uint64_t m_forgotten = 0;
};

} // namespace zviptv::trace
