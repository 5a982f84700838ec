// SPDX-License-Identifier: MIT
#pragma once

#include "client/link/Link.h"
#include "client/message/Reply.h"
#include "client/message/Request.h"

#include <zviptv/client/Pending.h>
#include <zviptv/client/Result.h>

namespace zviptv::client {

/// Reads the answer of a function.
template <class Answer>
using Reader = Result<Answer> (*)(Reply& reply);

/// Sends a request and waits for the answer. Any thread.
template <class Answer>
Result<Answer> Ask(Link& link, Request request, Reader<Answer> read)
{
    Result<CMessageBuffer> const message = link.SendAndWait(request);
    if (!message) {
        return message.GetFailure();
    }
    Reply reply(*message, request.Function());
    return read(reply);
}

/// Sends a request and passes the answer to `done`. The context's thread.
template <class Answer>
Pending Ask(Link& link, Request request, Reader<Answer> read, Completion<Answer> done, CallOptions options)
{
    char const* const function = request.Function();
    return link.Send(std::move(request), options.timeout,
                     [read, function, done = std::move(done)](Result<CMessageBuffer> const& message) {
                         if (!done) {
                             return;
                         }
                         if (!message) {
                             done(message.GetFailure());
                             return;
                         }
                         Reply reply(*message, function);
                         done(read(reply));
                     });
}

} // namespace zviptv::client
