// SPDX-License-Identifier: MIT
#pragma once

#include "Message.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>

namespace zviptv::sim {

/// One function and its handler.
template <typename Service>
struct RequestRow
{
    char const* function;
    Reply (Service::*answer)(Request const&);
};

/// The answer of the handler of the request's function; nullopt if there is none.
template <typename Service, typename Rows>
std::optional<CMessageBuffer> AnswerFrom(Rows const& rows, Service& service, Request const& request)
{
    std::string const name = request.Function();
    auto const row =
        std::find_if(std::begin(rows), std::end(rows),
                     [&name](RequestRow<Service> const& candidate) { return name == candidate.function; });
    return row == std::end(rows) ? std::nullopt
                                 : std::optional<CMessageBuffer>((service.*row->answer)(request));
}

} // namespace zviptv::sim
