// SPDX-License-Identifier: MIT
#pragma once

#include "endpoints/Service.h"
#include "glib/Owned.h"

namespace zviptv::sim {

/// Does what the call link::Watch says: has the picture or the sound written to the pipe that came with it.
/// The answer, a tuple, which nobody owns yet. @throws std::invalid_argument when there is no pipe
GVariant* Watch(Service& service, GVariant* parameters, GDBusMethodInvocation* invocation);

} // namespace zviptv::sim
