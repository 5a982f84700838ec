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
    ZV_FAILURE_NO_SERVICE, ///< no service runs, the service has left the bus, or has no endpoint for the
                           ///< object
    ZV_FAILURE_GONE,       ///< the object has been destroyed, by Destroy or by itself
    ZV_FAILURE_TIMED_OUT,  ///< no answer within 2000 ms
    ZV_FAILURE_BUS_ERROR,  ///< the service or the bus answered with a D-Bus error
    ZV_FAILURE_TOO_LARGE,  ///< the message is larger than the bus accepts; nothing was sent
    ZV_FAILURE_REFUSED,    ///< the service answered with the result 0, or no subscription key could be made
    ZV_FAILURE_MALFORMED_REPLY,  ///< the answer, or a notification, cannot be read
    ZV_FAILURE_INVALID_ARGUMENT, ///< an argument is invalid: a null pointer, an unknown key, a message key
                                 ///< or a name that is not UTF-8 (values may be any bytes)
};

/// The calling thread's last failure. A failure has a kind, a function and a message; the key and the name of
/// the D-Bus error are empty if there is none. No pointer is ever null.
///
/// The library may add members at the end. Read the members; do not rely on the size.
struct ZVFailure
{
    /// ZV_FAILURE_NONE if the last call did not fail.
    EZVFailureKind kind;

    /// The last function that was called, without its class: "MuteAudio". For a notification that cannot be
    /// read, "PESCB" or "CaptionCB". Empty before the first call. Valid for the life of the process.
    char const* function;

    /// The key of the protocol whose value is wrong: "stcCount". Valid for the life of the process.
    char const* key;

    /// The name of the D-Bus error in the answer: "org.freedesktop.DBus.Error.AccessDenied". At most 255
    /// bytes.
    char const* errorName;

    /// What is wrong and, if possible, what to do: one line of UTF-8 text of at most 1023 bytes, for people.
    /// For a D-Bus error, it is the text of that error. A longer text ends in "..."; control characters, and
    /// bytes that are not UTF-8, are written as \\x and two hexadecimal digits.
    char const* message;
};

/// The calling thread's last failure. Each thread has its own.
///
/// Each of these functions sets it first to ZV_FAILURE_NONE, and then to the failure, if there is one: all
/// functions of CIPTVServiceAPI and of its objects, and the constructors and the sending functions of
/// CProxyDBusHelper, CCommonNative and CConnectionHelperDBusClient. They also set it if they return success
/// although nothing was sent: a subscription that did not reach the service, a Destroy that could not be
/// announced, an object that could not be connected. Before a call throws std::invalid_argument,
/// std::out_of_range or std::length_error, it is set to ZV_FAILURE_MALFORMED_REPLY. Work of the library in
/// callbacks of the main loop does not change it, with one exception: a notification that cannot be read sets
/// it on the thread that iterates the context.
/// The result and its pointers are valid until the thread ends, but their contents change with the next call
/// of the library on the thread: copy what you need longer. May be called at any time, also from destructors
/// of static and thread-local objects. Calls that succeed allocate no memory for it.
ZVIPTV_API ZVFailure const& ZVGetLastFailure() noexcept;

/// The kind in words for messages and logs: "none", "no bus", "no service", "gone", "timed out", "bus error",
/// "too large", "refused", "malformed reply", "invalid argument"; "unknown" for any other number. Valid for
/// the life of the process.
ZVIPTV_API char const* ZVFailureKindName(EZVFailureKind kind) noexcept;
