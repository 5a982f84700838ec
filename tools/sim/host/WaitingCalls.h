// SPDX-License-Identifier: MIT
#pragma once

#include "ServiceLink.h"

#include <gio/gio.h>

#include <string>
#include <utility>
#include <vector>

namespace zviptv::sim {

/// Calls for a service that is not connected yet, in the order in which they arrived.
class WaitingCalls
{
public:
    using Requests = std::vector<ServiceLink::Request>;

    void Add(ServiceLink::Request request) { m_requests.push_back(std::move(request)); }

    /// Removes and returns all calls.
    Requests Take() { return std::exchange(m_requests, {}); }

    /// Answers all calls with an error.
    void Refuse(GIOErrorEnum code, char const* why);

    /// Drops the calls of this caller.
    void Forget(std::string const& caller);

private:
    Requests m_requests;
};

} // namespace zviptv::sim
