// SPDX-License-Identifier: MIT
#pragma once

namespace zviptv::test {

/// Says that this test leaks and may: an exception that passes through GLib's frames takes what they hold
/// with it.
void ExpectLeaks();

} // namespace zviptv::test
