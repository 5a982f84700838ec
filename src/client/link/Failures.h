// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Failure.h>

#include <optional>
#include <string>

namespace zviptv::client {

/// The calling thread's last failure of the contract's library as one of `function`.
Failure LastFailure(char const* function);

Failure NoBus(char const* function, std::string const& why);
Failure NoService(char const* function, char const* why);
Failure TimedOut(char const* function, long long milliseconds);
Failure Gone(char const* function);
Failure Cancelled(char const* function);

/// For a partner that left before it answered.
constexpr char LeftUnanswered[] =
    "the service left the bus before it answered; it may have carried the request out";

/// Whether the bus reports that the callee has gone without an answer.
bool IsNoReply(Failure const& failure);

/// Whether the bus had nobody to deliver the request to. Sending it again cannot carry it out twice.
bool IsUndelivered(Failure const& failure);

} // namespace zviptv::client
