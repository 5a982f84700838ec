// SPDX-License-Identifier: MIT
/// @file
/// Why a call of the client layer failed.

#pragma once

#include <zviptv/Export.h>

#include <string>

namespace zviptv {

/// Why something failed. Kinds may be added at the end: treat one that you do not know as a failure.
enum class FailureKind
{
    NoBus,           ///< the bus cannot be reached, or has closed the connection
    NoService,       ///< no service runs, it left before it answered, or it lacks the endpoint
    Gone,            ///< the Television was destroyed before the answer came
    TimedOut,        ///< no answer in time
    BusError,        ///< the service or the bus answered with a D-Bus error
    TooLarge,        ///< the message is larger than the bus carries (32 MiB); nothing was sent
    Refused,         ///< the service answered with the result 0
    MalformedReply,  ///< the answer, or a pushed message, cannot be read
    InvalidArgument, ///< an argument cannot be sent; nothing was sent
    Cancelled,       ///< Pending::Cancel() was called
    CallbackThrew,   ///< a callback of the application threw an exception, which was caught
};

/// The kind in words: "no bus", "no service", "gone", "timed out", "bus error", "too large", "refused",
/// "malformed reply", "invalid argument", "cancelled", "callback threw"; "unknown" for any other number.
/// Valid as long as the process.
ZVIPTV_API char const* ToString(FailureKind kind) noexcept;

/// What failed, and why.
struct Failure
{
    FailureKind kind = FailureKind::NoBus; ///< the kind of failure
    std::string function;  ///< the function of the protocol: "MuteAudio"; empty if there is none
    std::string key;       ///< the key whose value is wrong: "stcCount"; empty if there is none
    std::string errorName; ///< name of the D-Bus error in the answer; empty if there is none
    std::string message;   ///< what is wrong and what to do about it, for people; one line of UTF-8
};

/// One line for people: "MuteAudio: timed out: no answer to the request within 2000 ms; ...".
ZVIPTV_API std::string ToString(Failure const& failure);

/// Whether all values are equal.
inline bool operator==(Failure const& left, Failure const& right)
{
    return left.kind == right.kind && left.function == right.function && left.key == right.key &&
           left.errorName == right.errorName && left.message == right.message;
}
/// Whether a value differs.
inline bool operator!=(Failure const& left, Failure const& right)
{
    return !(left == right);
}

} // namespace zviptv
