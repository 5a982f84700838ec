// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <string>

namespace zviptv::ctl {

// What went wrong, in words. The library tells neither the key nor the value: what is known is the kind of
// value.

/// Why the answer to a method of the interfaces cannot be read, from what the library threw; with the
/// parameters that it may be.
std::string MalformedAnswer(std::string const& method, std::exception const& error);

/// The same of a notification.
std::string UnreadableNotification(std::exception const& error);

/// "name: text" where the reason of a failed exchange is an error that the service answered with; empty where
/// it is one of the bus's own.
std::string ErrorAnswer(std::string const& reason);

/// The bus does not let this user call the service.
std::string ForbiddenByPolicy();

/// The service serves other interfaces, but not the method's.
std::string MissingEndpoint(std::string const& method);

} // namespace zviptv::ctl
