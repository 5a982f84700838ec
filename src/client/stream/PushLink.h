// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>

namespace zviptv::client {

/// The two subscriptions of the contract.
enum class PushKind
{
    Pes,
    Caption
};

/// What subscriptions need of the way to the service. All on the thread that iterates the context.
class PushLink
{
public:
    virtual ~PushLink() = default;

    /// Asks the service to begin or to end pushing, without waiting. The link asks a service that has come
    /// again by itself.
    virtual void Request(PushKind kind, bool on) = 0;

    /// Reports a pushed message that cannot be read: its function, the key to blame, what is wrong.
    virtual void ReportUnreadable(char const* function, char const* key, std::string const& message) = 0;

    /// Runs code of the application, and reports an exception that leaves it as one of `function`.
    virtual void Guard(char const* function, std::function<void()> const& code) = 0;

protected:
    PushLink() = default;
    PushLink(PushLink const&) = default;
    PushLink& operator=(PushLink const&) = default;
};

} // namespace zviptv::client
