// SPDX-License-Identifier: MIT
/// @file
/// Why the last call failed.

#pragma once

#include <zviptv/Export.h>

/// Why a function of the library failed. Values may be added at the end: treat one that you do not know as a
/// failure.
enum EZVFailureKind
{
    ZV_FAILURE_NONE,       ///< the last call did not fail
    ZV_FAILURE_NO_BUS,     ///< the bus cannot be reached, has closed the connection, or no descriptor is free
    ZV_FAILURE_NO_SERVICE, ///< no service runs, it has left the bus, or it has no endpoint for the object
    ZV_FAILURE_GONE,       ///< the object has been destroyed, by Destroy or by itself
    ZV_FAILURE_TIMED_OUT,  ///< no answer within 2000 ms
    ZV_FAILURE_BUS_ERROR,  ///< the service or the bus answered with a D-Bus error
    ZV_FAILURE_TOO_LARGE,  ///< the message is larger than the bus carries; nothing was sent
    ZV_FAILURE_REFUSED,    ///< the service answered with the result 0, or no subscription key could be made
    ZV_FAILURE_MALFORMED_REPLY,  ///< the answer, or a notification, cannot be read
    ZV_FAILURE_INVALID_ARGUMENT, ///< an argument makes no call: a null pointer, an unknown key, a key of a
                                 ///< message or a name that is not UTF-8 (values may be any bytes)
};

/// The calling thread's last failure. A failure has a kind, a function and a message; the key and the name of
/// the D-Bus error are empty texts where there is none. No pointer is ever null.
///
/// The library may add members at the end. Read the members; do not rely on the size.
struct ZVFailure
{
    /// ZV_FAILURE_NONE if the last call did not fail.
    EZVFailureKind kind;

    /// The function that was called last, without its class: "MuteAudio". For a notification that cannot be
    /// read "PESCB" or "CaptionCB". Empty before the first call. Valid as long as the process.
    char const* function;

    /// The key of the protocol that is to blame: "stcCount". Valid as long as the process.
    char const* key;

    /// The D-Bus error that was answered: "org.freedesktop.DBus.Error.AccessDenied". At most 255 bytes.
    char const* errorName;

    /// What is wrong and, where something can be done about it, what: one line of UTF-8 text of at most 1023
    /// bytes, for people. Of a D-Bus error it is the text that came with it. A longer text ends in "...";
    /// control characters, and bytes that are not UTF-8, are written as \\x and two hexadecimal digits.
    char const* message;
};

/// The calling thread's last failure. Each thread has its own.
///
/// Every function of CIPTVServiceAPI and of its objects, and every constructor and every function that sends
/// in CProxyDBusHelper, CCommonNative and CConnectionHelperDBusClient, sets it: at its beginning to
/// ZV_FAILURE_NONE, and then to what fails. So it is also set where a function returns success although
/// nothing was sent: a subscription that the service was not told of, a Destroy that could not be announced,
/// an object that could not be connected. Before a call throws std::invalid_argument, std::out_of_range or
/// std::length_error, it is set to ZV_FAILURE_MALFORMED_REPLY. What the library does in callbacks of the main
/// loop leaves it alone, except that a notification which cannot be read sets it on the thread that iterates
/// the context.
///
/// The result is valid until the thread ends, and so are its pointers; what it and they show changes with the
/// next call of the library on the thread. Copy what is needed longer. May be called at any time, also from
/// destructors of static and thread-local objects. Costs nothing on success: no function of the library
/// allocates memory for it.
ZVIPTV_API ZVFailure const& ZVGetLastFailure() noexcept;

/// The kind in words for messages and logs: "none", "no bus", "no service", "gone", "timed out", "bus error",
/// "too large", "refused", "malformed reply", "invalid argument"; "unknown" for any other number. Valid as
/// long as the process.
ZVIPTV_API char const* ZVFailureKindName(EZVFailureKind kind) noexcept;
