// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <deque>

namespace zviptv::fuzz {

// ScriptedChannel.cpp stands in for the channel and for the helper bus: the proxies above are the library's
// own, and what a service would send them comes from the fuzzer.

/// Has the library write its log, to nowhere.
void ReadLog();

/// Whether a service runs, so that objects can be made.
void SetServiceRunning(bool running);

/// The service's answers from now on, one an exchange; with null, and when none is left, the exchange fails
/// or, with `refuse`, is answered with the result 0.
void SetReplies(std::deque<Owned<GVariant>> replies, bool refuse = false);

/// The service sends a notification to the channel that was made last.
void Notify(GVariant* body);

} // namespace zviptv::fuzz
