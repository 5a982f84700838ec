// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv {

/// The call or notification that the calling thread is handling, for the life of the object. If a call is
/// still unanswered at the end, because of an exception, it is answered with an error: the bus allows a
/// connection only 128 unanswered calls.
class IncomingScope
{
public:
    /// A notification has no invocation.
    explicit IncomingScope(char const* sender, GDBusMethodInvocation* invocation = nullptr);
    ~IncomingScope();
    IncomingScope(IncomingScope const&) = delete;
    IncomingScope& operator=(IncomingScope const&) = delete;

    /// The innermost scope on this thread, or null.
    static IncomingScope* Current();

    char const* Sender() const { return m_sender; }

    /// The call that is still unanswered; null after the answer, and for notifications.
    GDBusMethodInvocation* TakeInvocation() { return std::exchange(m_invocation, nullptr); }

private:
    char const* m_sender;
    GDBusMethodInvocation* m_invocation;
    IncomingScope* m_outer;
};

/// Answers a call with `reply`, or with an error if the reply cannot be sent. It does not use the invocation,
/// which would refuse a reply to the declared method SendSignal; that method is answered like Send.
void AnswerCall(GDBusMethodInvocation* invocation, CMessageBuffer const& reply);

/// Answers a call that is still unanswered, with an error.
void AnswerCallWithNothing(GDBusMethodInvocation* invocation);

/// Answers a call with a D-Bus error.
void AnswerCallWithError(GDBusMethodInvocation* invocation, char const* name, char const* text);

} // namespace zviptv
