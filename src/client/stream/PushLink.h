// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace zviptv::client {

/// The two kinds of subscriptions in the protocol.
enum class PushKind
{
    Pes,
    Caption
};

/// The connection to the service as subscriptions need it. For the thread that iterates the context.
class PushLink
{
public:
    virtual ~PushLink() = default;

    /// Requests the start or the end of pushes, without waiting. After a restart of the service, the link
    /// repeats the request itself.
    virtual void Request(PushKind kind, bool on) = 0;

    /// Reports a pushed message that cannot be read: its function, the malformed key, the reason.
    virtual void ReportUnreadable(char const* function, char const* key, std::string const& message) = 0;

    /// Runs code of the application, and reports an exception that leaves it as one of `function`.
    virtual void Guard(char const* function, std::function<void()> const& code) = 0;

protected:
    PushLink() = default;
    PushLink(PushLink const&) = default;
    PushLink& operator=(PushLink const&) = default;
};

} // namespace zviptv::client
