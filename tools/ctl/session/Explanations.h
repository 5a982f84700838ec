// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <string>

namespace zviptv::ctl {

// What went wrong, in words.

/// Why a notification cannot be read, after the library threw `error`.
std::string UnreadableNotification(std::exception const& error);

/// The bus ended the connection.
constexpr char BusClosed[] = "the bus closed the connection; see whether it still runs";

/// The endpoint, the connection of this name, was closed, and the service runs on.
std::string EndpointClosed(std::string const& name);

/// The bus does not let this user call the service.
std::string ForbiddenByPolicy();

/// The service serves other interfaces, but not the method's.
std::string MissingEndpoint(std::string const& method);

} // namespace zviptv::ctl
