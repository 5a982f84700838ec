// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

namespace zviptv {

/// Sets the calling thread's failure from the error of a message that was not sent or not answered. `what` is
/// the message in words: "the request". `timeoutMs` is how long the answer was waited for; -1 is GIO's
/// default.
void SetSendFailure(Error const& error, char const* what, int timeoutMs = 2000);

/// Sets the failure from the error of a connection to the bus that could not be made.
void SetConnectFailure(Error const& error);

/// Unless a failure is set, sets the failure that a channel has no connection to the bus.
void SetNoBus();

/// Sets the failure that the process has no free descriptor.
void SetShortage();

} // namespace zviptv
