// SPDX-License-Identifier: MIT
#pragma once

#include <exception>
#include <string>

namespace zviptv::ctl {

// Errors in words.

/// Why a notification cannot be read, after the library threw `error`.
std::string UnreadableNotification(std::exception const& error);

/// The bus closed the connection.
constexpr char BusClosed[] = "the bus closed the connection; check that it still runs";

/// The connection of the endpoint with this name was closed, but the service still runs.
std::string EndpointClosed(std::string const& name);

/// The bus does not let this user call the service.
std::string ForbiddenByPolicy();

/// The service has endpoints of other interfaces, but not of the method's.
std::string MissingEndpoint(std::string const& method);

} // namespace zviptv::ctl
