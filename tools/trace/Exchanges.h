// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zviptv::trace {

/// A call without a reply yet.
struct Exchange
{
    enum class Kind
    {
        Request,
        Announcement,
        ProcessQuestion ///< a call that asks the bus for the process of a name
    };

    Kind kind = Kind::Request;
    std::uint64_t number = 0;
    std::int64_t time = 0;
    std::string callee; ///< bus name of the callee
    std::string endpoint;
    std::string function;
    std::string subject; ///< name in a ProcessQuestion
    bool isFromService = false;
};

/// The calls without a reply yet: a bounded number of the latest ones.
class Exchanges
{
public:
    void Add(std::string_view caller, std::uint32_t serial, Exchange exchange);

    /// Removes and returns the call that a reply to `caller` answers; empty if it is unknown.
    std::optional<Exchange> Take(std::string_view caller, std::uint32_t replySerial);

    /// Number of calls that were dropped because too many others followed.
    std::uint64_t Forgotten() const { return m_forgotten; }

private:
    std::unordered_map<std::string, Exchange> m_open;
    std::deque<std::string> m_order; ///< keys, oldest first; includes answered calls
    std::uint64_t m_forgotten = 0;
};

} // namespace zviptv::trace
