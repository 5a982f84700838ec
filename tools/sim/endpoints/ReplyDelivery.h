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
    std::string errorName; ///< name of the D-Bus error that is sent instead; empty for none
    std::string errorText;

    bool IsAnswer() const { return !isDropped && errorName.empty(); }
    bool IsPlain() const { return IsAnswer() && delay.count() == 0; }
};

/// The delivery with these faults.
Delivery DeliveryOf(Damage const& damage);

/// The effect of the faults on the answer, for the log; empty if there is none.
std::string NoteOf(Damage const& damage);

/// Answers the call that the calling thread is handling: late, with an error, or not at all. Does nothing if
/// the handler can answer by returning the reply. `later` is the deferred answer if it was already taken; if
/// necessary, this function takes it.
void Deliver(std::optional<CDeferredReply>& later, CMessageBuffer const& reply, Delivery const& delivery,
             MainLoop& loop);

} // namespace zviptv::sim
