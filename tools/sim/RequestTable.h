#pragma once

#include "Message.h"

#include <algorithm>
#include <optional>

namespace zviptv::sim {

/// One function that a service class answers.
template <typename Service>
struct RequestRow
{
    char const* function;
    Reply (Service::*answer)(Request const&);
};

/// What the row of the request's function answers; nothing when no row has it.
template <typename Service, typename Rows>
std::optional<CMessageBuffer> AnswerFrom(Rows const& rows, Service& service, Request const& request)
{
    std::string const name = request.Function();
    auto const row = std::find_if(rows.begin(), rows.end(), [&name](RequestRow<Service> const& candidate) {
        return name == candidate.function;
    });
    return row == rows.end() ? std::nullopt : std::optional<CMessageBuffer>((service.*row->answer)(request));
}

} // namespace zviptv::sim
