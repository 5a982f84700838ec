#pragma once

#include <zviptv/Export.h>
#include <zviptv/MessageBuffer.h>

#include <memory>

typedef struct _GDBusMethodInvocation GDBusMethodInvocation;

/// The answer to a call, to be given later, as an error, or not at all: for a service that must not hold up
/// its main loop until it knows the answer.
///
/// Threads: any; one object belongs to one thread at a time. Lifetime: independent of the channel that the
/// call came in on. When the object goes without an answer sent, the caller runs into its time-out.
class ZVIPTV_API CDeferredReply
{
public:
    /// Takes the answer of the call that the calling thread is handling: what the message callback returns is
    /// then not sent. Empty outside a message callback, and when the answer was taken before.
    static CDeferredReply Take();

    CDeferredReply(CDeferredReply&&) noexcept;
    CDeferredReply& operator=(CDeferredReply&&) noexcept;
    ~CDeferredReply();

    /// True until an answer was sent.
    bool IsPending() const;

    /// Answers with a message. Does nothing when nothing is pending.
    void Send(CMessageBuffer const& reply);

    /// Answers with a D-Bus error, which the caller's send reports as a failure. `name` is a D-Bus error name
    /// ("org.example.Error.Busy"), `text` UTF-8 for people; an invalid one is replaced. Does nothing when
    /// nothing is pending.
    void SendError(char const* name, char const* text);

private:
    explicit CDeferredReply(std::shared_ptr<GDBusMethodInvocation> call);

    std::shared_ptr<GDBusMethodInvocation> m_call;
};
