// SPDX-License-Identifier: MIT
#pragma once

namespace zviptv::test {

/// Allows leaks in this test: an exception that passes through GLib's frames leaks their memory.
void ExpectLeaks();

} // namespace zviptv::test
