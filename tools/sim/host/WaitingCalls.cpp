// SPDX-License-Identifier: MIT
#include "WaitingCalls.h"

#include <algorithm>
#include <iterator>

namespace zviptv::sim {

namespace {

void Answer(WaitingCalls::Requests const& requests, GIOErrorEnum code, char const* why)
{
    Error error;
    error.Set(code, why);
    for (ServiceLink::Request const& request : requests) {
        request.reply(nullptr, error.Get());
    }
}

} // namespace

void WaitingCalls::Refuse(GIOErrorEnum code, char const* why)
{
    Answer(Take(), code, why);
}

void WaitingCalls::Forget(std::string const& caller)
{
    auto const first = std::stable_partition(
        m_requests.begin(), m_requests.end(),
        [&caller](ServiceLink::Request const& request) { return request.caller != caller; });
    Requests const dropped(std::make_move_iterator(first), std::make_move_iterator(m_requests.end()));
    m_requests.erase(first, m_requests.end());
    Answer(dropped, G_IO_ERROR_NOT_CONNECTED, "the caller has left the bus");
}

} // namespace zviptv::sim
