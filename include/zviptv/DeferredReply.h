// SPDX-License-Identifier: MIT
/// @file
/// An answer to a call that is sent later.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/MessageBuffer.h>

#include <memory>

typedef struct _GDBusMethodInvocation GDBusMethodInvocation;

/// The pending answer to a call, which can be sent later, as an error, or not at all. With it, a service can
/// continue its main loop while it prepares the answer.
/// Threads: any, but use an object from one thread at a time. Lifetime: independent of the channel that
/// received the call. If the object is destroyed or assigned to before an answer was sent, the caller gets
/// the error "org.freedesktop.DBus.Error.NoReply".
/// The bus counts the unanswered calls of a connection, including those whose caller has given up. At 128 it
/// refuses every further call. Therefore send an answer even if the caller no longer waits for it.
class ZVIPTV_API CDeferredReply
{
public:
    /// Takes over the answer to the call that the calling thread is handling. The return value of the message
    /// callback, or of the announcement handler of IConnectionHelper, is then not sent. The answer to an
    /// announcement has the key "dbusname". The result is empty outside these callbacks, and if the answer
    /// was already taken.
    static CDeferredReply Take();

    /// Takes over the pending answer; the other object is then empty.
    CDeferredReply(CDeferredReply&&) noexcept;

    /// Takes over the pending answer of the other object. If an answer was pending in this object, its caller
    /// gets the error NoReply.
    CDeferredReply& operator=(CDeferredReply&&) noexcept;

    /// Sends the error NoReply if an answer is still pending.
    ~CDeferredReply();

    /// Returns true while an answer is pending; false if the object is empty, or the call was answered or
    /// left unanswered.
    bool IsPending() const;

    /// Answers with a message. Does nothing if no answer is pending.
    void Send(CMessageBuffer const& reply);

    /// Answers with a D-Bus error, which the caller's send reports as a failure. `name` is a D-Bus error name
    /// ("org.example.Error.Busy"), `text` is readable text in UTF-8. An invalid name or text, or a text that
    /// is larger than a message may be, is replaced. Does nothing if no answer is pending.
    void SendError(char const* name, char const* text);

    /// Sends no answer: the caller waits until its time-out, and the bus counts the call until one of the two
    /// connections closes. For tests of applications.
    void LeaveUnanswered();

private:
    explicit CDeferredReply(std::shared_ptr<GDBusMethodInvocation> call);

    std::shared_ptr<GDBusMethodInvocation> m_call;
};
