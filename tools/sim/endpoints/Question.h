// SPDX-License-Identifier: MIT
#pragma once

#include "glib/Owned.h"

#include <string>

namespace zviptv::sim {

/// A call of an application's data subscriber without content, which it answers when it has worked off what
/// it was sent before. An application that stands still leaves one call open, however long, and answers it as
/// soon as it goes on.
class Question
{
public:
    /// On the bus connection that the channels use, so that nothing overtakes anything.
    explicit Question(std::string busName);
    ~Question() = default;
    Question(Question const&) = delete;
    Question& operator=(Question const&) = delete;

    /// Waits for the answer. False when there will be none: the application has gone, Cancel() was called, or
    /// the bus does not take the call.
    bool Ask();

    /// Ends Ask() for good. From any thread.
    void Cancel();

private:
    std::string m_busName;
    Owned<GDBusConnection> m_connection;
    Owned<GCancellable> m_cancellable;
};

} // namespace zviptv::sim
