// SPDX-License-Identifier: MIT
#pragma once

#include "dbus/GLibHandles.h"

#include <zviptv/MessageBuffer.h>

namespace zviptv {

/// What the calling thread is handling, a call or a notification, for as long as the object lives. A call
/// whose answer is still open then, because of an exception, is answered with an error: the bus lets nobody
/// have more than 128 unanswered ones.
class IncomingScope
{
public:
    /// A notification has no invocation.
    explicit IncomingScope(char const* sender, GDBusMethodInvocation* invocation = nullptr);
    ~IncomingScope();
    IncomingScope(IncomingScope const&) = delete;
    IncomingScope& operator=(IncomingScope const&) = delete;

    /// The innermost one on this thread, or null.
    static IncomingScope* Current();

    char const* Sender() const { return m_sender; }

    /// The call whose answer is still open; null afterwards and for notifications.
    GDBusMethodInvocation* TakeInvocation() { return std::exchange(m_invocation, nullptr); }

private:
    char const* m_sender;
    GDBusMethodInvocation* m_invocation;
    IncomingScope* m_outer;
};

/// Answers a call with `reply`, or with an error when that cannot travel. Not through the invocation: that
/// would refuse a reply to the declared method SendSignal, which is answered like Send.
void AnswerCall(GDBusMethodInvocation* invocation, CMessageBuffer const& reply);

/// Answers a call that nobody has answered, with an error.
void AnswerCallWithNothing(GDBusMethodInvocation* invocation);

/// Answers a call with a D-Bus error.
void AnswerCallWithError(GDBusMethodInvocation* invocation, char const* name, char const* text);

} // namespace zviptv
