// SPDX-License-Identifier: MIT
#pragma once

#include "MessageLog.h"

#include <memory>
#include <string>
#include <vector>

namespace zviptv::test {

/// Sees every message of the bus, for any receiver, after the constructor has returned: calls to the
/// daemon itself (AddMatch, RequestName) included. The daemon puts a copy of each message into the
/// monitor's queue when it handles the message, so wait for what you expect. Needs to run as the
/// bus's user or as root, else the constructor throws std::runtime_error.
class BusMonitor
{
public:
    /// An empty list of match rules means everything.
    explicit BusMonitor(std::string const& address, std::vector<std::string> const& rules = {});
    ~BusMonitor();
    BusMonitor(BusMonitor const&) = delete;
    BusMonitor& operator=(BusMonitor const&) = delete;

    MessageLog& Seen();
    std::optional<WireMessage> WaitFor(MessagePredicate const& predicate,
                                       std::chrono::milliseconds timeout = patience);

private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace zviptv::test
