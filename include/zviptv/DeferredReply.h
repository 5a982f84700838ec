// SPDX-License-Identifier: MIT
/// @file
/// The answer to a call, given later.

#pragma once

#include <zviptv/Export.h>
#include <zviptv/MessageBuffer.h>

#include <memory>

typedef struct _GDBusMethodInvocation GDBusMethodInvocation;

/// The answer to a call, to be given later, as an error, or not at all: for a service that must not hold up
/// its main loop until it knows the answer.
///
/// Threads: any; one object belongs to one thread at a time. Lifetime: independent of the channel that the
/// call came in on. When the object goes, or another one takes its place, without an answer sent, the caller
/// gets the error "org.freedesktop.DBus.Error.NoReply".
///
/// The bus counts the calls of a connection that are still unanswered, those whose caller has given up
/// included, and refuses every further one from 128 on: an answer that takes longer than the callers wait is
/// to be given all the same.
class ZVIPTV_API CDeferredReply
{
public:
    /// Takes the answer of the call that the calling thread is handling: what the message callback, or the
    /// announcement handler of IConnectionHelper, returns is then not sent. The answer to an announcement has
    /// the key "dbusname". Empty outside these callbacks, and when the answer was taken before.
    static CDeferredReply Take();

    /// Takes over what is pending; the other object is empty then.
    CDeferredReply(CDeferredReply&&) noexcept;

    /// Takes over what is pending. What was pending here before is answered with the error.
    CDeferredReply& operator=(CDeferredReply&&) noexcept;

    /// Answers what is still pending with the error.
    ~CDeferredReply();

    /// True while an answer is owed: false when empty, answered, or left unanswered.
    bool IsPending() const;

    /// Answers with a message. Does nothing when nothing is pending.
    void Send(CMessageBuffer const& reply);

    /// Answers with a D-Bus error, which the caller's send reports as a failure. `name` is a D-Bus error name
    /// ("org.example.Error.Busy"), `text` UTF-8 for people; an invalid one, and a text that is larger than a
    /// message may be, is replaced. Does nothing when nothing is pending.
    void SendError(char const* name, char const* text);

    /// Sends no answer: the caller runs into its time-out, and the bus counts the call until one of the two
    /// leaves. For tests of applications.
    void LeaveUnanswered();

private:
    explicit CDeferredReply(std::shared_ptr<GDBusMethodInvocation> call);

    std::shared_ptr<GDBusMethodInvocation> m_call;
};
