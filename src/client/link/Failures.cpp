// SPDX-License-Identifier: MIT
#include "client/link/Failures.h"

#include <zviptv/Failure.h>

namespace zviptv::client {

namespace {

FailureKind KindOf(EZVFailureKind kind)
{
    switch (kind) {
    case ZV_FAILURE_NONE:
    case ZV_FAILURE_NO_SERVICE:
        return FailureKind::NoService;
    case ZV_FAILURE_NO_BUS:
        return FailureKind::NoBus;
    case ZV_FAILURE_GONE:
        return FailureKind::Gone;
    case ZV_FAILURE_TIMED_OUT:
        return FailureKind::TimedOut;
    case ZV_FAILURE_BUS_ERROR:
        return FailureKind::BusError;
    case ZV_FAILURE_TOO_LARGE:
        return FailureKind::TooLarge;
    case ZV_FAILURE_REFUSED:
        return FailureKind::Refused;
    case ZV_FAILURE_MALFORMED_REPLY:
        return FailureKind::MalformedReply;
    case ZV_FAILURE_INVALID_ARGUMENT:
        return FailureKind::InvalidArgument;
    }
    return FailureKind::BusError;
}

} // namespace

Failure LastFailure(char const* function)
{
    ZVFailure const& last = ZVGetLastFailure();
    Failure failure{KindOf(last.kind), function, last.key, last.errorName, last.message};
    // The texts of the core library advise to create objects again, which the client layer does itself.
    if (failure.kind == FailureKind::NoService) {
        failure.message = NoService(function, "no service answers on the bus").message;
    } else if (failure.kind == FailureKind::NoBus) {
        failure.message = NoBus(function, "the connection to the bus is closed").message;
    }
    return failure;
}

Failure NoBus(char const* function, std::string const& why)
{
    return {FailureKind::NoBus, function, "", "",
            why + "; start the bus, or set its address: the television connects again by itself"};
}

Failure NoService(char const* function, char const* why)
{
    return {FailureKind::NoService, function, "", "",
            std::string(why) + "; start the service: the television connects to it by itself"};
}

Failure TimedOut(char const* function, long long milliseconds)
{
    return {FailureKind::TimedOut, function, "", "",
            "no answer within " + std::to_string(milliseconds) +
                " ms; check that the service does not hang and is not overloaded"};
}

Failure Gone(char const* function)
{
    return {FailureKind::Gone, function, "", "", "the television was destroyed before the answer came"};
}

Failure Cancelled(char const* function)
{
    return {FailureKind::Cancelled, function, "", "", "the application cancelled the call"};
}

bool IsNoReply(Failure const& failure)
{
    return failure.kind == FailureKind::BusError && failure.errorName == "org.freedesktop.DBus.Error.NoReply";
}

bool IsUndelivered(Failure const& failure)
{
    return failure.kind == FailureKind::NoService;
}

} // namespace zviptv::client
