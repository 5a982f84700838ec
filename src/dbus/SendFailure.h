// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

namespace zviptv {

/// Sets the calling thread's failure from the error of a message that was not sent, or not answered. `what`
/// names the message: "the request".
void SetSendFailure(Error const& error, char const* what);

/// Sets it from the error of a connection to the bus that could not be made.
void SetConnectFailure(Error const& error);

/// Sets, unless one is set, that a channel has no connection to the bus.
void SetNoBus();

/// Sets it for a process without a free descriptor.
void SetShortage();

} // namespace zviptv
