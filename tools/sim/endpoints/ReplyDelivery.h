// SPDX-License-Identifier: MIT
#pragma once

#include "Damage.h"
#include "common/MainLoop.h"

#include <zviptv/DeferredReply.h>
#include <zviptv/MessageBuffer.h>

#include <chrono>
#include <optional>
#include <string>

namespace zviptv::sim {

/// How an answer is sent.
struct Delivery
{
    std::chrono::milliseconds delay{0};
    bool isDropped = false;
    std::string errorName; ///< of the D-Bus error that is sent instead; empty for none
    std::string errorText;

    bool IsAnswer() const { return !isDropped && errorName.empty(); }
    bool IsPlain() const { return IsAnswer() && delay.count() == 0; }
};

/// As the faults want it.
Delivery DeliveryOf(Damage const& damage);

/// What the faults made of the answer, for the log; empty if nothing.
std::string NoteOf(Damage const& damage);

/// Answers the call that the calling thread is handling: late, with an error, or not at all. Does nothing if
/// the handler answers as well by returning the reply. `later` is the answer if it was taken already, and is
/// taken if it has to be.
void Deliver(std::optional<CDeferredReply>& later, CMessageBuffer const& reply, Delivery const& delivery,
             MainLoop& loop);

} // namespace zviptv::sim
