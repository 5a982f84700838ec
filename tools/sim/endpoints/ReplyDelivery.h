// SPDX-License-Identifier: MIT
#pragma once

#include "Damage.h"
#include "common/MainLoop.h"

#include <zviptv/DeferredReply.h>
#include <zviptv/MessageBuffer.h>

#include <optional>
#include <string>

namespace zviptv::sim {

/// Answers the call that the calling thread is handling as faults want it: late, with an error, or not at
/// all. Does nothing if the handler answers as well by returning the reply. `later` is the answer if it was
/// taken already, and is taken if it has to be. Returns a note of what became of the answer for the log;
/// empty if nothing did.
std::string Deliver(std::optional<CDeferredReply>& later, CMessageBuffer const& reply, Damage const& damage,
                    MainLoop& loop);

} // namespace zviptv::sim
