// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"
#include "glib/Owned.h"

namespace zviptv::sim {

/// Handles the call link::Watch: writes the picture or the sound to the pipe of the call. Returns the answer,
/// a floating tuple. @throws std::invalid_argument if there is no pipe
GVariant* Watch(Service& service, GVariant* parameters, GDBusMethodInvocation* invocation);

} // namespace zviptv::sim
