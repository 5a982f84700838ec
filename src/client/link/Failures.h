// SPDX-License-Identifier: MIT
#pragma once

#include <zviptv/client/Failure.h>

#include <optional>
#include <string>

namespace zviptv::client {

/// The calling thread's last failure of the core library, reported for `function`.
Failure LastFailure(char const* function);

Failure NoBus(char const* function, std::string const& why);
Failure NoService(char const* function, char const* why);
Failure TimedOut(char const* function, long long milliseconds);
Failure Gone(char const* function);
Failure Cancelled(char const* function);

/// For a partner that left before it answered.
constexpr char LeftUnanswered[] =
    "the service left the bus before it answered; it may have carried the request out";

/// Whether the bus reports that the callee left without an answer.
bool IsNoReply(Failure const& failure);

/// Whether the bus found no receiver for the request. A second attempt cannot carry it out twice.
bool IsUndelivered(Failure const& failure);

} // namespace zviptv::client
